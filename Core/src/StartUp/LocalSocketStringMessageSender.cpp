#include "StartUp/LocalSocketStringMessageSender.h"

#include <QDataStream>

namespace corvane {
namespace base {
namespace business {
namespace internal {

LocalSocketStringMessageSender::LocalSocketStringMessageSender(QString serverName, int timeout)
    : serverName(std::move(serverName)), timeout(timeout), sharedMemory(this->serverName)
{
}

bool LocalSocketStringMessageSender::connectToReceiver()
{
    if (!sharedMemory.isAttached() && !sharedMemory.attach(QSharedMemory::ReadWrite)) {
        return false;
    }
    socket.connectToServer(serverName, QIODevice::WriteOnly);
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

void LocalSocketStringMessageSender::disconnectFromReceiver()
{
    socket.disconnectFromServer();
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
