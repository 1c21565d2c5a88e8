#include "Utility/PrivateFolder.h"

#include <QDebug>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// What makes the open folder not private, or an empty text.
QString unprivateReason(const struct stat& status)
{
    if (!S_ISDIR(status.st_mode)) {
        return QStringLiteral("not a folder");
    }
    if (status.st_uid != ::geteuid()) {
        return QStringLiteral("owned by user %1").arg(status.st_uid);
    }
    if ((status.st_mode & 07777) != 0700) {
        return QStringLiteral("mode %1 instead of 0700")
            .arg(status.st_mode & 07777, 4, 8, QLatin1Char('0'));
    }
    return {};
}

bool check(const QString& path, bool followLink, QString* reason)
{
    const int descriptor
        = ::open(QFile::encodeName(path).constData(),
                 O_RDONLY | O_DIRECTORY | O_CLOEXEC | (followLink ? 0 : O_NOFOLLOW));
    struct stat status
    {
    };
    QString why;
    if (descriptor < 0) {
        why = errno == ELOOP || errno == ENOTDIR ? QStringLiteral("a symbolic link or no folder")
                                                 : systemError();
    } else if (::fstat(descriptor, &status) != 0) {
        why = systemError();
    } else {
        why = unprivateReason(status);
    }
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (reason) {
        *reason = why;
    }
    return why.isEmpty();
}

} // namespace

bool PrivateFolder::isPrivate(const QString& path, QString* reason)
{
    return check(path, false, reason);
}

QString PrivateFolder::fallbackFolder()
{
    const QString folder
        = QDir::tempPath() + QStringLiteral("/corvane-runtime-") + QString::number(::geteuid());
    QString reason;
    if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST) {
        reason = systemError();
    } else {
        check(folder, false, &reason);
    }
    if (!reason.isEmpty()) {
        qCritical().noquote() << QStringLiteral(
                                     "runtimeFolder: the private folder %1 cannot be used: %2")
                                     .arg(folder, reason);
        return {};
    }
    return folder;
}

// $XDG_RUNTIME_DIR is the user's own choice, a link to a folder included; it must still be
// private, as a copy of another user's environment (sudo -E) is not.
QString PrivateFolder::runtimeFolder()
{
    const QString runtime = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    QString reason;
    if (!runtime.isEmpty()) {
        if (check(runtime, true, &reason)) {
            return QDir::cleanPath(runtime);
        }
        qWarning().noquote() << QStringLiteral(
                                    "runtimeFolder: XDG_RUNTIME_DIR %1 is not private (%2)")
                                    .arg(runtime, reason);
    }
    return fallbackFolder();
}

int PrivateFolder::openFile(const QString& path, int flags, QString* reason)
{
    const int descriptor
        = ::open(QFile::encodeName(path).constData(), flags | O_NOFOLLOW | O_CLOEXEC, 0600);
    struct stat status
    {
    };
    QString why;
    if (descriptor < 0) {
        why = errno == ELOOP ? QStringLiteral("a symbolic link") : systemError();
    } else if (::fstat(descriptor, &status) != 0) {
        why = systemError();
    } else if (!S_ISREG(status.st_mode) || status.st_nlink != 1) {
        why = QStringLiteral("not a plain file");
    } else if (status.st_uid != ::geteuid()) {
        why = QStringLiteral("owned by user %1").arg(status.st_uid);
    }
    if (reason) {
        *reason = why;
    }
    if (!why.isEmpty() && descriptor >= 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
