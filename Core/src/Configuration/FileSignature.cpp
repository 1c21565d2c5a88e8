#include "Configuration/FileSignature.h"

#include "Interfaces/ILoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstring>

namespace corvane {
namespace base {
namespace business {

namespace {

const QString loggerName = QStringLiteral("corvane.base.business.FileSignature");
constexpr int blockSize = 1024;

// Drops every "\n" and every "\r" directly before one, within this block only: a "\r" that
// ends a block stays even when the next block starts with "\n". Returns the new length.
int removeLineBreaks(char* block, int length)
{
    const char* in = block;
    const char* const end = block + length;
    char* out = block;
    while (in < end) {
        const char* newline = static_cast<const char*>(std::memchr(in, '\n', size_t(end - in)));
        const char* keptEnd = newline != nullptr ? newline : end;
        if (newline != nullptr && keptEnd > in && keptEnd[-1] == '\r') {
            --keptEnd;
        }
        std::memmove(out, in, size_t(keptEnd - in));
        out += keptEnd - in;
        in = newline != nullptr ? newline + 1 : end;
    }
    return int(out - block);
}

} // namespace

FileSignature::FileSignature()
    : loggingManager(ManagerRegistry::instance()->getLoggingManager()) { }

FileSignature::~FileSignature() = default;

bool FileSignature::isValid(const QString& path, bool checkIncludedSignature)
{
    QString computed;
    createHashFromFileContent(path, computed);

    QString stored;
    QFile signatureFile(path + QStringLiteral(".sig"));
    if (signatureFile.open(QIODevice::ReadOnly)) {
        QTextStream lines(&signatureFile);
        while (!lines.atEnd()) {
            stored = lines.readLine();
        }
        signatureFile.close();
        logDebug(QStringLiteral("isValid: %1 %2").arg(stored, computed));
    } else {
        logCritical(QStringLiteral("isValid: Could not open signature file: ")
                    + signatureFile.fileName());
    }

    // An unreadable file has no fingerprint; an empty or missing ".sig" must not match that.
    if (!computed.isEmpty() && stored == computed) {
        return true;
    }
    return checkIncludedSignature && checkFileWithIncludedSignature(path);
}

void FileSignature::createHashFromFileContent(const QString& path, QString& hash)
{
    const QByteArray name = QFileInfo(path).fileName().toLocal8Bit();
    salt = QCryptographicHash::hash(name.toHex(), QCryptographicHash::Sha1).toHex();

    QString saltBytes;
    for (const char byte : qAsConst(salt)) {
        saltBytes += QStringLiteral("%1 ").arg(static_cast<uchar>(byte), 2, 16, QLatin1Char('0'));
    }
    logDebug(QStringLiteral("createHashFromFileContent Hashsalt: ") + saltBytes);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logCritical(QStringLiteral("createHashFromFileContent: Could not open file: ") + path);
        return;
    }
    QDataStream stream(&file);
    getHash(stream, hash);
    file.close();
    logDebug(QStringLiteral("createHashFromFileContent: ") + hash);
}

// Reads and cleans the stream block by block, as the fingerprint is defined, but hands the
// cleaned blocks to SHA-1 in large pieces.
void FileSignature::getHash(QDataStream& stream, QString& hash) const
{
    constexpr int batchSize = 64 * blockSize;
    QCryptographicHash sha1(QCryptographicHash::Sha1);
    QByteArray batch(batchSize + blockSize + salt.size(), Qt::Uninitialized);
    int used = 0;
    bool firstBlock = true;
    do {
        if (used > batchSize) {
            sha1.addData(batch.constData(), used);
            used = 0;
        }
        char* block = batch.data() + used;
        const int read = stream.readRawData(block, blockSize);
        const int length = removeLineBreaks(block, qMax(read, 0));
        used += length;
        // Content shorter than the salt is padded with the salt up to the salt's length.
        if (firstBlock && stream.atEnd() && length < salt.size()) {
            std::memcpy(batch.data() + used, salt.constData(), size_t(salt.size() - length));
            used += salt.size() - length;
        }
        firstBlock = false;
    } while (!stream.atEnd());
    sha1.addData(batch.constData(), used);
    hash = QString::fromLatin1(sha1.result().toHex());
}

void FileSignature::saveHashInAFile(const QString& path, const QString& hash)
{
    QFile signatureFile(path + QStringLiteral(".sig"));
    if (!signatureFile.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return;
    }
    QTextStream(&signatureFile) << hash;
}

void FileSignature::signFile(const QString& path)
{
    QString hash;
    createHashFromFileContent(path, hash);
    QFile file(path);
    if (!file.open(QIODevice::Append)) {
        return;
    }
    file.write("\n" + hash.toLatin1());
}

// Hashes a copy without its last line under the same file name (so with the same salt), and
// compares with that last line. The copy goes to a private folder below the temporary folder:
// the checked file may itself lie in the temporary folder, and other checks may run at once.
bool FileSignature::checkFileWithIncludedSignature(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        logCritical(QStringLiteral("checkFileWithIncludedSignature: Could not open file: ") + path);
        return false;
    }
    const QByteArray content = file.readAll();
    file.close();
    const int lastBreak = content.lastIndexOf('\n');
    const QString included = QString::fromLatin1(content.mid(lastBreak + 1));
    // The break itself stays with the content: a "\r\n" before the signature is then dropped
    // as a whole, as everywhere else in the file.
    const int contentLength = lastBreak + 1;

    const QTemporaryDir copyDirectory(QDir::tempPath() + QStringLiteral("/FileSignature-XXXXXX"));
    const QString copyPath = copyDirectory.filePath(QFileInfo(path).fileName());
    QFile copy(copyPath);
    if (!copyDirectory.isValid() || !copy.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        logCritical(QStringLiteral("checkFileWithIncludedSignature: Could not open file: ")
                    + copyPath);
        return false;
    }
    QDataStream to(&copy);
    for (int offset = 0; offset < contentLength; offset += blockSize) {
        const int written = to.writeRawData(content.constData() + offset,
                                            qMin(blockSize, contentLength - offset));
        logDebug(QStringLiteral("checkFileWithIncludedSignature: wrote %1").arg(written));
    }
    copy.close();

    bool equal = compareWithCopy(copyPath, included);
    // A file that ended in a lone "\r" when it was signed loses that "\r" together with the
    // break above; so does one whose short content fits one block only without the break.
    // Both validate against exactly what signFile hashed: the content before the break.
    if (!equal && contentLength > 0 && QFile::resize(copyPath, lastBreak)) {
        equal = compareWithCopy(copyPath, included);
    }
    QFile::remove(copyPath);
    return equal;
}

bool FileSignature::compareWithCopy(const QString& copyPath, const QString& included)
{
    QString computed;
    createHashFromFileContent(copyPath, computed);
    logDebug(QStringLiteral("checkFileWithIncludedSignature: %1 %2").arg(computed, included));
    return !computed.isEmpty() && computed == included;
}

void FileSignature::logDebug(const QString& message) const
{
    loggingManager->logDebug(loggerName, message);
}

void FileSignature::logCritical(const QString& message) const
{
    loggingManager->logError(loggerName, message);
}

} // namespace business
} // namespace base
} // namespace corvane
