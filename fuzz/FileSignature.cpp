// File signatures on arbitrary content under a fuzzer-chosen file name. The fingerprint must be
// the one described: SHA-1 over the content read in blocks of 1024 bytes, each block without its
// "\r\n" and then its "\n", and a content that came in one block and is shorter than 40 bytes
// that way is filled up to 40 bytes with the salt (the hex of SHA-1 of the hex of the file
// name). Beyond that: "\n" turned into "\r\n" does not change it (where no block boundary
// falls into a line break), a signed file validates with its included signature and not
// without one, and a ".sig" companion holding the fingerprint as its last line validates.

#include "FuzzSupport.h"

#include "FakeManagers.h"

#include "Configuration/FileSignature.h"
#include "StartUp/ManagerRegistry.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

#include <memory>

using corvane::base::business::FileSignature;
using corvane::base::business::ManagerRegistry;

namespace {

std::unique_ptr<QTemporaryDir> folder;

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        fuzz::fail("cannot write", path);
    }
    file.write(content);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

QString expectedFingerprint(const QString& fileName, const QByteArray& content)
{
    const QByteArray salt
        = QCryptographicHash::hash(fileName.toLocal8Bit().toHex(), QCryptographicHash::Sha1)
              .toHex();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    int position = 0;
    do {
        const bool first = position == 0;
        QByteArray block = content.mid(position, 1024);
        position += block.size();
        block.replace("\r\n", "").replace("\n", "");
        if (first && position == content.size() && block.size() < salt.size()) {
            block += salt.left(salt.size() - block.size());
        }
        hash.addData(block);
    } while (position < content.size());
    return QString::fromLatin1(hash.result().toHex());
}

QString fingerprint(FileSignature& signature, const QString& path)
{
    QString hash = QStringLiteral("unchanged");
    signature.createHashFromFileContent(path, hash);
    return hash;
}

// Whether turning every "\n" into "\r\n" keeps every block boundary out of a line break, and
// keeps the content in one block if it was in one.
bool lineEndsSurviveBlocks(const QByteArray& content, const QByteArray& converted)
{
    if (content.contains('\r') || (content.size() <= 1024) != (converted.size() <= 1024)) {
        return false;
    }
    for (int boundary = 1024; boundary < converted.size(); boundary += 1024) {
        if (converted.at(boundary - 1) == '\r' || converted.at(boundary - 1) == '\n') {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::application();
    static fakes::LoggingManager loggingManager;
    ManagerRegistry::instance()->registerManager(loggingManager);
    // The included-signature check copies a file to the temporary folder under its own name:
    // that folder is a private one here, and the files live in a folder below it.
    static QTemporaryDir temporary(QDir::tempPath() + "/corvane-fuzz-signature-XXXXXX");
    qputenv("TMPDIR", temporary.path().toLocal8Bit());
    folder = std::make_unique<QTemporaryDir>(temporary.filePath("files-XXXXXX"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider provider(data, size);
    QString fileName = QString::fromStdString(provider.ConsumeRandomLengthString(24));
    fileName.remove(QRegularExpression(QStringLiteral("[^A-Za-z0-9._ -]")));
    if (fileName.isEmpty() || fileName == "." || fileName == "..") {
        fileName = QStringLiteral("app.xml");
    }
    const std::string rest = provider.ConsumeRemainingBytesAsString();
    const QByteArray content(rest.data(), int(rest.size()));
    const QString path = folder->filePath(fileName);
    QFile::remove(path + ".sig");

    FileSignature signature;
    write(path, content);
    const QString hash = fingerprint(signature, path);
    const QString expected = expectedFingerprint(fileName, content);
    CHECK(hash == expected,
          "fingerprint " + hash + " of " + fuzz::show(content) + " named \"" + fileName
              + "\", expected " + expected);

    QByteArray converted = content;
    converted.replace("\n", "\r\n");
    if (lineEndsSurviveBlocks(content, converted)) {
        write(path, converted);
        CHECK(fingerprint(signature, path) == hash,
              "\"\\r\\n\" line ends changed the fingerprint of " + fuzz::show(content));
        write(path, content);
    }

    CHECK(!signature.isValid(path, false), "valid without any signature: " + fuzz::show(content));
    signature.saveHashInAFile(path, hash);
    CHECK(read(path + ".sig") == hash.toLatin1(),
          "the .sig file holds " + fuzz::show(read(path + ".sig")));
    CHECK(signature.isValid(path, false), "its own .sig does not validate " + fuzz::show(content));
    write(path + ".sig", "old line\n" + hash.toLatin1() + "\n");
    CHECK(signature.isValid(path, false), "a .sig with the fingerprint as last line is refused");
    write(path + ".sig", hash.toUpper().toLatin1());
    CHECK(hash.toUpper() == hash || !signature.isValid(path, false),
          "an upper-case .sig is accepted");
    QFile::remove(path + ".sig");

    signature.signFile(path);
    CHECK(read(path) == content + '\n' + hash.toLatin1(),
          "signFile wrote " + fuzz::show(read(path)) + " for " + fuzz::show(content));
    CHECK(signature.checkFileWithIncludedSignature(path),
          "a signed file does not validate: " + fuzz::show(content));
    CHECK(signature.isValid(path, true), "a signed file is not valid with its included signature");
    CHECK(!signature.isValid(path, false),
          "a signed file is valid without looking at its signature");
    CHECK(!QFile::exists(QDir::tempPath() + '/' + fileName), "the temporary copy was left behind");
    CHECK(read(path) == content + '\n' + hash.toLatin1(), "checking changed the file");

    write(path, content + '\n' + hash.toUpper().toLatin1());
    CHECK(hash.toUpper() == hash || !signature.checkFileWithIncludedSignature(path),
          "an upper-case included signature is accepted");
    QFile::remove(path);
    CHECK(fingerprint(signature, path) == QLatin1String("unchanged"),
          "a missing file changed the hash");
    return 0;
}
