// File signatures of arbitrary content: the fingerprint as described, unchanged by "\r\n" for
// "\n" where no 1024-byte block boundary splits a line break; a signed file validates, also with
// "\r\n" line ends, and no file validates without a signature.

#include "FuzzSupport.h"

#include "FakeManagers.h"

#include "Configuration/FileSignature.h"
#include "StartUp/ManagerRegistry.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

using corvane::base::business::FileSignature;
using corvane::base::business::ManagerRegistry;

namespace {

QString folder;

QString expectedFingerprint(const QString& fileName, const QByteArray& content)
{
    using Hash = QCryptographicHash;
    const QByteArray salt = Hash::hash(fileName.toLocal8Bit().toHex(), Hash::Sha1).toHex();
    Hash hash(Hash::Sha1);
    int position = 0;
    do {
        QByteArray block = content.mid(position, 1024);
        position += block.size();
        block.replace("\r\n", "").replace("\n", "");
        if (position <= 1024 && position == content.size() && block.size() < salt.size())
            block += salt.left(salt.size() - block.size());
        hash.addData(block);
    } while (position < content.size());
    return QString::fromLatin1(hash.result().toHex());
}

// Whether converted, original with "\r\n" for "\n", hashes alike: original holds no "\r", no
// block boundary falls between a "\r" and its "\n", and both are one block or both are not.
bool hashesAlike(const QByteArray& original, const QByteArray& converted)
{
    bool alike = !original.contains('\r');
    for (int boundary = 1024; boundary < converted.size(); boundary += 1024)
        alike = alike && converted.at(boundary - 1) != '\r';
    return alike && (original.size() <= 1024) == (converted.size() <= 1024);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    static fakes::LoggingManager loggingManager;
    ManagerRegistry::instance()->registerManager(loggingManager);
    // The included-signature check copies a file to the temporary folder under its own name:
    // that is a private one here, apart from the folder of the files.
    static QTemporaryDir files, temporary;
    folder = files.path() + '/';
    qputenv("TMPDIR", temporary.path().toLocal8Bit());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QStringList names {"app.xml", "a", "Config File.xml", "0123456789.0123456789"};
    FuzzedDataProvider provider(data, size);
    const QString fileName = names.at(provider.ConsumeIntegralInRange(0, 3));
    const QString path = folder + fileName;
    const QByteArray content = QByteArray::fromStdString(provider.ConsumeRemainingBytesAsString());
    const QString context = " for " + fuzz::show(content) + " named " + fileName;
    FileSignature signature;
    const auto crlf = [](QByteArray text) {
        return text.replace("\n", "\r\n");
    };
    const auto fingerprint = [&](const QByteArray& text) {
        fuzz::writeFile(path, text);
        QString hash;
        signature.createHashFromFileContent(path, hash);
        return hash;
    };
    const QString converted = fingerprint(crlf(content));
    const QString hash = fingerprint(content), wanted = expectedFingerprint(fileName, content);
    CHECK(hash == wanted, "fingerprint " + hash + context + ", expected " + wanted);
    CHECK(!hashesAlike(content, crlf(content)) || converted == hash,
          "\"\\r\\n\" line ends changed the fingerprint to " + converted + context);
    CHECK(!signature.isValid(path, true), "valid without any signature" + context);

    const QByteArray signedContent = content + '\n' + hash.toLatin1();
    signature.signFile(path);
    CHECK(fuzz::readFile(path) == signedContent && !signature.isValid(path, false),
          "signFile wrote " + fuzz::show(fuzz::readFile(path)) + context);
    CHECK(signature.checkFileWithIncludedSignature(path) && signature.isValid(path, true)
              && fuzz::readFile(path) == signedContent
              && !QFile::exists(QDir::tempPath() + '/' + fileName),
          "a signed file does not validate, or checking it changes it or leaves a copy" + context);
    fuzz::writeFile(path, crlf(signedContent));
    CHECK(!hashesAlike(content, crlf(content + '\n'))
              || signature.checkFileWithIncludedSignature(path),
          "with \"\\r\\n\" line ends a signed file does not validate" + context);
    return 0;
}
