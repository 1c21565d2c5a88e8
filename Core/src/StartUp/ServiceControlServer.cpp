#include "StartUp/ServiceControlServer.h"

#include <QDebug>
#include <QFile>
#include <QLocalSocket>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
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

namespace {

// Longer lines are no requests of ours.
constexpr qint64 longestRequest = 1024;
// How long the server waits for descriptors to be freed before it tries to accept again.
constexpr int acceptRetry = 100; // ms

int openSpare()
{
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

} // namespace

ServiceControlServer::ServiceControlServer(QObject* parent)
    : QObject(parent), spare(openSpare()), idleCheck(new QTimer(this))
{
    connect(idleCheck, &QTimer::timeout, this, &ServiceControlServer::closeIdle);
}

ServiceControlServer::~ServiceControlServer()
{
    struct stat status = {};
    if (listener >= 0 && ::lstat(QFile::encodeName(path).constData(), &status) == 0
        && quint64(status.st_dev) == device && quint64(status.st_ino) == inode) {
        ::unlink(QFile::encodeName(path).constData());
    }
    if (listener >= 0) {
        ::close(listener);
    }
    if (spare >= 0) {
        ::close(spare);
    }
}

// The socket file is made for the user alone (0600) before anyone can connect: on Linux it takes
// the mode of the socket that is bound.
bool ServiceControlServer::listen(const QString& path)
{
    if (request(path, QStringLiteral("status"), 1000)) {
        qCritical().noquote() << QStringLiteral("listen: a running service answers on ") + path;
        return false;
    }
    const QByteArray file = QFile::encodeName(path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (listener >= 0 || size_t(file.size()) >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, file.constData(), size_t(file.size()));
    ::unlink(file.constData()); // a socket file that nobody answers on is stale
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    struct stat status = {};
    if (fd < 0 || ::fchmod(fd, S_IRUSR | S_IWUSR) != 0
        || ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0
        || ::listen(fd, SOMAXCONN) != 0 || ::lstat(file.constData(), &status) != 0
        || (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        qCritical().noquote() << QStringLiteral("listen: cannot listen on %1: %2")
                                     .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        if (fd >= 0) {
            ::close(fd);
        }
        return false;
    }
    listener = fd;
    this->path = path;
    device = quint64(status.st_dev);
    inode = quint64(status.st_ino);
    notifier = new QSocketNotifier(listener, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &ServiceControlServer::acceptConnections);
    idleCheck->start(idleTimeout / 4);
    return true;
}

bool ServiceControlServer::request(const QString& path, const QString& text, int timeout)
{
    if (!QFile::exists(path)) {
        return false;
    }
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(timeout)) {
        return false;
    }
    socket.write((text + QLatin1Char('\n')).toUtf8());
    if (!socket.waitForBytesWritten(timeout)) {
        return false;
    }
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeout)) {
            return false;
        }
    }
    return socket.readLine().trimmed() == "ok";
}

void ServiceControlServer::acceptConnections()
{
    while (acceptOne()) {
    }
}

// Whether another connection may be waiting.
bool ServiceControlServer::acceptOne()
{
    const int descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor >= 0) {
        adopt(descriptor);
        return true;
    }
    if (errno == EINTR || errno == ECONNABORTED) {
        return true;
    }
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        return refuseWithoutDescriptor();
    }
    return false; // EAGAIN: none left
}

// No descriptor is left for the waiting connection: the oldest connection makes room for it,
// else the spare descriptor is freed to take it and close it. Else the server waits a moment,
// still listening.
bool ServiceControlServer::refuseWithoutDescriptor()
{
    if (QLocalSocket* connection = oldest()) {
        drop(connection,
             QStringLiteral("no descriptor left for a new connection, the oldest one closed"));
        return true;
    }
    if (spare >= 0) {
        ::close(spare);
        const int descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        spare = openSpare();
        warn(QStringLiteral("no descriptor left for a new connection, it was closed"));
        return descriptor >= 0;
    }
    notifier->setEnabled(false);
    QTimer::singleShot(acceptRetry, this, [this] {
        spare = spare >= 0 ? spare : openSpare();
        notifier->setEnabled(true);
    });
    return false;
}

void ServiceControlServer::adopt(int descriptor)
{
    if (connections.size() >= maximumConnections) {
        drop(oldest(), QStringLiteral("more than %1 connections, the oldest one closed")
                           .arg(maximumConnections));
    }
    auto* connection = new QLocalSocket(this);
    if (!connection->setSocketDescriptor(descriptor)) {
        ::close(descriptor);
        delete connection;
        return;
    }
    connection->setReadBufferSize(longestRequest * 4);
    QElapsedTimer active;
    active.start();
    connections.insert(connection, active);
    connect(connection, &QLocalSocket::readyRead, this, [this, connection] { answer(connection); });
    connect(connection, &QLocalSocket::disconnected, this, [this, connection] {
        connections.remove(connection);
        connection->deleteLater();
    });
    answer(connection);
}

void ServiceControlServer::answer(QLocalSocket* connection)
{
    if (!connections.contains(connection)) {
        return;
    }
    while (connection->canReadLine()) {
        connections[connection].start();
        const QString line = QString::fromUtf8(connection->readLine()).trimmed();
        bool known = true;
        if (line == QLatin1String("status")) {
        } else if (line == QLatin1String("stop")) {
            emit stopRequested();
        } else if (line == QLatin1String("pause")) {
            emit pauseRequested();
        } else if (line == QLatin1String("resume")) {
            emit resumeRequested();
        } else if (line.startsWith(QLatin1String("command "))) {
            bool ok = false;
            const int number = line.mid(8).toInt(&ok);
            known = ok;
            if (ok) {
                emit commandRequested(number);
            }
        } else {
            known = false;
        }
        connection->write(known ? "ok\n" : "unknown\n");
        connection->flush();
    }
    if (connection->bytesAvailable() > longestRequest) {
        drop(connection, QStringLiteral("a request longer than %1 bytes").arg(longestRequest));
        return;
    }
    enforceBudgets(connection);
}

// Requests that wait to be read and answers that the peer does not read count against the
// connection's budget and the total.
void ServiceControlServer::enforceBudgets(QLocalSocket* connection)
{
    const auto unread = [](const QLocalSocket* socket) {
        return socket->bytesAvailable() + socket->bytesToWrite();
    };
    if (unread(connection) > connectionBudget) {
        drop(connection, QStringLiteral("a connection with more than %1 bytes unread closed")
                             .arg(connectionBudget));
        return;
    }
    qint64 total = 0;
    for (auto it = connections.cbegin(); it != connections.cend(); ++it) {
        total += unread(it.key());
    }
    if (total > totalBudget) {
        drop(connection, QStringLiteral("more than %1 bytes unread in all connections, the "
                                        "connection that added to them closed")
                             .arg(totalBudget));
    }
}

void ServiceControlServer::closeIdle()
{
    const QList<QLocalSocket*> open = connections.keys();
    for (QLocalSocket* connection : open) {
        if (connections.value(connection).hasExpired(idleTimeout)) {
            drop(connection, QStringLiteral("a connection without a request for %1 s closed")
                                 .arg(idleTimeout / 1000));
        }
    }
}

// The connection that has waited longest for a request; none when there is none.
QLocalSocket* ServiceControlServer::oldest() const
{
    const auto found = std::max_element(
        connections.cbegin(), connections.cend(),
        [](const QElapsedTimer& a, const QElapsedTimer& b) { return a.elapsed() < b.elapsed(); });
    return found == connections.cend() ? nullptr : found.key();
}

// Closes the connection at once, its descriptor freed.
void ServiceControlServer::drop(QLocalSocket* connection, const QString& reason)
{
    if (connection == nullptr || !connections.contains(connection)) {
        return;
    }
    connections.remove(connection);
    warn(reason);
    connection->abort();
    connection->deleteLater();
}

void ServiceControlServer::warn(const QString& reason)
{
    if (lastWarning.isValid() && !lastWarning.hasExpired(warningInterval)) {
        return;
    }
    lastWarning.start();
    qWarning().noquote() << QStringLiteral("controlPeer: %1 on %2 (the next peer that meets a "
                                           "limit is reported a minute later at the earliest)")
                                .arg(reason, path);
}

} // namespace business
} // namespace base
} // namespace corvane
