#include "StartUp/LocalSocketListener.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace business {
namespace internal {

namespace {

constexpr int backlog = 64;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

LocalSocketListener::LocalSocketListener(QObject* parent) : QObject(parent)
{
    retry = new QTimer(this);
    retry->setSingleShot(true);
    retry->setInterval(retryDelayMs);
    connect(retry, &QTimer::timeout, this, [this] {
        if (notifier) {
            takeReserve();
            notifier->setEnabled(true);
            acceptAll();
        }
    });
}

LocalSocketListener::~LocalSocketListener()
{
    close();
}

bool LocalSocketListener::listen(const QString& name)
{
    close();
    path = QDir::isAbsolutePath(name) ? name : QDir::tempPath() + QLatin1Char('/') + name;
    const QByteArray file = QFile::encodeName(path);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (file.isEmpty() || size_t(file.size()) >= sizeof(address.sun_path)) {
        error = QStringLiteral("the socket path is empty or too long: ") + path;
        return false;
    }
    std::memcpy(address.sun_path, file.constData(), size_t(file.size()));
    descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    struct stat status
    {
    };
    if (descriptor < 0 || ::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address)
        || ::chmod(file.constData(), 0600) || ::lstat(file.constData(), &status)
        || ::listen(descriptor, backlog)) {
        error = systemError();
        if (descriptor >= 0) {
            ::close(descriptor);
            descriptor = -1;
        }
        return false;
    }
    device = status.st_dev;
    inode = status.st_ino;
    notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &LocalSocketListener::acceptAll);
    takeReserve();
    return true;
}

void LocalSocketListener::close()
{
    if (descriptor < 0) {
        return;
    }
    retry->stop();
    releaseReserve();
    delete notifier;
    notifier = nullptr;
    ::close(descriptor);
    descriptor = -1;
    struct stat status
    {
    };
    const QByteArray file = QFile::encodeName(path);
    if (::lstat(file.constData(), &status) == 0 && status.st_dev == device
        && status.st_ino == inode) {
        ::unlink(file.constData());
    }
}

bool LocalSocketListener::isListening() const
{
    return descriptor >= 0;
}

QString LocalSocketListener::fullServerName() const
{
    return path;
}

QString LocalSocketListener::errorString() const
{
    return error;
}

void LocalSocketListener::setRoomMaker(std::function<bool()> roomMaker)
{
    this->roomMaker = std::move(roomMaker);
}

void LocalSocketListener::takeReserve()
{
    while (reserve.size() < reservedDescriptors) {
        const int spare = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        if (spare < 0) {
            return; // taken again after the next shortage
        }
        reserve.append(spare);
    }
}

void LocalSocketListener::releaseReserve()
{
    for (const int spare : qAsConst(reserve)) {
        ::close(spare);
    }
    reserve.clear();
}

// A shortage makes room at most a few times in a row, so that descriptors that do not come
// free (held elsewhere in the process) end in a wait, not in a loop. Making room and reporting
// run on the reserve; it is taken back before the next accept() can use up what came free.
void LocalSocketListener::acceptAll()
{
    int roomMade = 0;
    while (descriptor >= 0) {
        const int connection
            = ::accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (connection >= 0) {
            auto* socket = new QLocalSocket(this);
            socket->setSocketDescriptor(connection, QLocalSocket::ConnectedState,
                                        QIODevice::ReadWrite);
            emit newConnection(socket);
            continue;
        }
        if (errno == EINTR || errno == ECONNABORTED) {
            continue;
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return;
        }
        const QString reason = systemError();
        const bool shortage = errno == EMFILE || errno == ENFILE;
        if (shortage) {
            releaseReserve();
        }
        const bool madeRoom = shortage && roomMade < 8 && roomMaker && roomMaker();
        if (!madeRoom) {
            emit acceptFailed(reason);
        }
        takeReserve();
        if (madeRoom) {
            ++roomMade;
            continue;
        }
        notifier->setEnabled(false);
        retry->start();
        return;
    }
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
