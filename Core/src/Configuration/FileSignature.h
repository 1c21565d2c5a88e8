#pragma once

#include "CoreExport.h"

#include <QByteArray>
#include <QString>

class QDataStream;

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace business {

/**
 * A salted SHA-1 fingerprint of a text file (40 lower-case hex digits), to detect files edited
 * by hand. Line breaks do not count, so "\r\n" and "\n" files match. The salt depends on the
 * file name only and enters files shorter than 40 bytes without line breaks.
 *
 * The fingerprint is kept in a companion file (path + ".sig") or appended to the file itself as
 * its last line. A checksum of data files, not a protection against a deliberate attacker.
 * Requires a registered logging manager.
 */
class CORE_EXPORT FileSignature
{
public:
    /// Takes the logging manager from the manager registry.
    FileSignature();
    virtual ~FileSignature();

    /// True when path + ".sig" holds the file's fingerprint or, if asked, the file carries its
    /// own fingerprint as last line.
    virtual bool isValid(const QString& path, bool checkIncludedSignature);
    /// Leaves hash unchanged when the file cannot be opened.
    virtual void createHashFromFileContent(const QString& path, QString& hash);
    /// Writes hash into path + ".sig"; a file that cannot be written is passed over silently.
    virtual void saveHashInAFile(const QString& path, const QString& hash);
    /// Appends "\n" and the file's fingerprint to the file.
    virtual void signFile(const QString& path);
    /// Whether the file's last line is the fingerprint of the content before it (see signFile()).
    virtual bool checkFileWithIncludedSignature(const QString& path);

    /// Writes the fingerprint of what stream holds into hash, with the salt of the last
    /// createHashFromFileContent().
    void getHash(QDataStream& stream, QString& hash) const;

private:
    Q_DISABLE_COPY(FileSignature)

    bool compareWithCopy(const QString& copyPath, const QString& included);
    void logDebug(const QString& message) const;
    void logCritical(const QString& message) const;

    QByteArray salt;
    interfaces::ILoggingManager* loggingManager;
};

} // namespace business
} // namespace base
} // namespace corvane
