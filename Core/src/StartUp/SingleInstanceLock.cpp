#include "StartUp/SingleInstanceLock.h"

#include "Utility/PrivateFolder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace business {
namespace internal {

SingleInstanceLock::SingleInstanceLock(QString path) : filePath(std::move(path)) { }

SingleInstanceLock::~SingleInstanceLock()
{
    if (descriptor >= 0) {
        ::close(descriptor); // gives the lock back
    }
}

// The descriptor is closed on exec, so that no program this one starts keeps the lock; a link
// in place of the file is refused, not followed.
SingleInstanceLock::Result SingleInstanceLock::tryLock()
{
    if (descriptor < 0) {
        descriptor = core::utility::PrivateFolder::openFile(filePath, O_RDWR | O_CREAT, &error);
        if (descriptor < 0) {
            return Failed;
        }
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK || errno == EINTR) {
            return HeldByAnother;
        }
        error = QString::fromLocal8Bit(std::strerror(errno));
        return Failed;
    }
    // The process id is only there for people to read; the lock holds without it.
    const QByteArray pid = QByteArray::number(qint64(::getpid())) + '\n';
    if (::ftruncate(descriptor, 0) == 0) {
        static_cast<void>(::pwrite(descriptor, pid.constData(), size_t(pid.size()), 0));
    }
    return Taken;
}

QString SingleInstanceLock::errorString() const
{
    return error;
}

QString SingleInstanceLock::path() const
{
    return filePath;
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
