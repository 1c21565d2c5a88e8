#include "StartUp/LocalSocketStringMessageSender.h"

#include "StartUp/LocalSocketStringMessageReceiver.h"

#include <QDataStream>
#include <QDeadlineTimer>
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
    return connectToRunningReceiver();
}

bool LocalSocketStringMessageSender::connectToRunningReceiver()
{
    socket.connectToServer(serverName, QIODevice::ReadWrite);
    return socket.waitForConnected(timeout);
}

namespace {

QByteArray frameOf(const QString& value)
{
    const QByteArray payload = value.toUtf8();
    QByteArray frame;
    QDataStream(&frame, QIODevice::WriteOnly) << qint32(payload.size());
    return frame + payload;
}

} // namespace

void LocalSocketStringMessageSender::sendValue(const QString& value)
{
    socket.write(frameOf(value));
    socket.waitForBytesWritten(10000);
}

LocalSocketStringMessageSender::Written
LocalSocketStringMessageSender::sendValues(const QStringList& values)
{
    QByteArray frames;
    for (const QString& value : values) {
        frames += frameOf(value);
    }
    socket.write(frames);
    QDeadlineTimer deadline(timeout);
    while (socket.bytesToWrite() > 0 && socket.state() == QLocalSocket::ConnectedState
           && !deadline.hasExpired()) {
        socket.waitForBytesWritten(int(qMax<qint64>(1, deadline.remainingTime())));
    }
    const qint64 left = socket.bytesToWrite();
    return left == 0 ? Written::Whole : left < frames.size() ? Written::Part : Written::Nothing;
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

// As waitForAcknowledgement(), with the event loop running.
int LocalSocketStringMessageSender::waitForAcknowledgements(int count)
{
    if (socket.bytesAvailable() < count && socket.state() == QLocalSocket::ConnectedState) {
        QEventLoop loop;
        QObject::connect(&socket, &QLocalSocket::readyRead, &loop, [this, count, &loop] {
            if (socket.bytesAvailable() >= count) {
                loop.quit();
            }
        });
        QObject::connect(&socket, &QLocalSocket::disconnected, &loop, &QEventLoop::quit);
        QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return int(qMin<qint64>(socket.bytesAvailable(), count));
}

bool LocalSocketStringMessageSender::isConnected() const
{
    return socket.state() == QLocalSocket::ConnectedState;
}

void LocalSocketStringMessageSender::disconnectFromReceiver()
{
    socket.disconnectFromServer();
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
