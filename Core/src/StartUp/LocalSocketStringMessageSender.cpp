#include "StartUp/LocalSocketStringMessageSender.h"

#include "StartUp/LocalSocketStringMessageReceiver.h"

#include <QDataStream>
#include <QDir>
#include <QEventLoop>
#include <QTimer>

namespace corvane {
namespace base {
namespace business {
namespace internal {

LocalSocketStringMessageSender::LocalSocketStringMessageSender(QString serverName, int timeout)
    : serverName(std::move(serverName)), timeout(timeout), sharedMemory(this->serverName)
{
    if (QDir::isAbsolutePath(this->serverName)) {
        sharedMemory.setNativeKey(LocalSocketStringMessageReceiver::markerFileOf(this->serverName));
    }
}

bool LocalSocketStringMessageSender::connectToReceiver()
{
    if (!sharedMemory.isAttached() && !sharedMemory.attach(QSharedMemory::ReadWrite)) {
        return false;
    }
    socket.connectToServer(serverName, QIODevice::ReadWrite);
    return socket.waitForConnected(timeout);
}

void LocalSocketStringMessageSender::sendValue(const QString& value)
{
    const QByteArray payload = value.toUtf8();
    QByteArray frame;
    QDataStream(&frame, QIODevice::WriteOnly) << qint32(payload.size());
    frame.append(payload);
    socket.write(frame);
    socket.waitForBytesWritten(10000);
}

// Waits with the event loop running, so that a receiver in this very thread can answer too.
bool LocalSocketStringMessageSender::waitForAcknowledgement()
{
    if (socket.bytesAvailable() == 0 && socket.state() == QLocalSocket::ConnectedState) {
        QEventLoop loop;
        QObject::connect(&socket, &QLocalSocket::readyRead, &loop, &QEventLoop::quit);
        QObject::connect(&socket, &QLocalSocket::disconnected, &loop, &QEventLoop::quit);
        QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return socket.read(1).size() == 1;
}

void LocalSocketStringMessageSender::disconnectFromReceiver()
{
    socket.disconnectFromServer();
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
