#include "StartUp/LocalSocketStringMessageReceiver.h"

#include "Logging/AssertionReport.h"

#include <QDataStream>
#include <QDebug>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>

namespace corvane {
namespace base {
namespace business {
namespace internal {

namespace {

void check(bool condition, const char* text, int line)
{
    AssertionReport::check(condition, text, "Core/src/StartUp/LocalSocketStringMessageReceiver.cpp",
                           line);
}

} // namespace

LocalSocketStringMessageReceiver::LocalSocketStringMessageReceiver(QString serverName)
    : serverName(std::move(serverName)), sharedMemory(this->serverName)
{
    if (QDir::isAbsolutePath(this->serverName)) {
        sharedMemory.setNativeKey(markerFileOf(this->serverName));
    }
}

QString LocalSocketStringMessageReceiver::markerFileOf(const QString& serverName)
{
    return serverName + QStringLiteral(".marker");
}

LocalSocketStringMessageReceiver::~LocalSocketStringMessageReceiver()
{
    cleanupConnection();
}

bool LocalSocketStringMessageReceiver::start(std::function<bool(QString)> callback)
{
    this->callback = std::move(callback);
    cleanupConnection();
    delete server;
    attachMarker();
    server = new QLocalServer(this);
    server->setMaxPendingConnections(1);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(server, &QLocalServer::newConnection, this,
            &LocalSocketStringMessageReceiver::handleNewConnection);
    return server->listen(serverName);
}

// A marker left by a killed receiver is taken over as it is: attached, it lives as long as this
// receiver. Senders attach to it and detach again, and the last one to detach removes it, so it
// may come and go while this receiver looks: attach, else create, until one works. Creating
// goes through an object of its own, since a QSharedMemory whose create() failed no longer
// attaches; the marker outlives it, attached here.
void LocalSocketStringMessageReceiver::attachMarker()
{
    for (int attempt = 0; attempt < 100 && !sharedMemory.isAttached(); ++attempt) {
        if (sharedMemory.attach(QSharedMemory::ReadWrite)) {
            return;
        }
        QSharedMemory creator;
        if (sharedMemory.key().isNull()) {
            creator.setNativeKey(sharedMemory.nativeKey());
        } else {
            creator.setKey(sharedMemory.key());
        }
        if (creator.create(1, QSharedMemory::ReadWrite)) {
            sharedMemory.attach(QSharedMemory::ReadWrite);
        } else if (creator.error() != QSharedMemory::AlreadyExists) {
            qWarning().noquote() << QStringLiteral("start: no marker for ") + serverName + ": "
                    + creator.errorString();
            return;
        }
    }
}

void LocalSocketStringMessageReceiver::cleanupConnection()
{
    const QList<QLocalSocket*> connections = expectedDataSize_.keys();
    for (QLocalSocket* connection : connections) {
        dropConnection(connection);
    }
}

void LocalSocketStringMessageReceiver::handleNewConnection()
{
    while (QLocalSocket* connection = server->nextPendingConnection()) {
        expectedDataSize_.insert(connection, 0);
        connect(connection, &QLocalSocket::readyRead, this,
                &LocalSocketStringMessageReceiver::handleNewData);
        connect(connection, &QLocalSocket::errorOccurred, this, [this, connection] {
            if (connection->error() != QLocalSocket::PeerClosedError) {
                dropConnection(connection);
            }
        });
        connect(connection, &QLocalSocket::disconnected, this, [this, connection] {
            readAll(connection); // what arrived together with the close
            dropConnection(connection);
        });
        readAll(connection); // data may have come with the connection
    }
}

void LocalSocketStringMessageReceiver::handleNewData()
{
    if (auto* connection = qobject_cast<QLocalSocket*>(sender())) {
        readAll(connection);
    }
}

void LocalSocketStringMessageReceiver::readAll(QLocalSocket* connection)
{
    while (handleNextData(connection)) { }
}

bool LocalSocketStringMessageReceiver::handleNextData(QLocalSocket* connection)
{
    if (!expectedDataSize_.contains(connection)) {
        return false;
    }
    if (expectedDataSize_.value(connection) == 0) {
        handleNewDataSize(connection);
    }
    if (expectedDataSize_.value(connection) > 0) {
        handleNewDataValue(connection);
    }
    if (!expectedDataSize_.contains(connection)) {
        return false;
    }
    const qint32 expected = expectedDataSize_.value(connection);
    return expected == 0 ? connection->bytesAvailable() >= 4
                         : connection->bytesAvailable() >= expected;
}

void LocalSocketStringMessageReceiver::handleNewDataSize(QLocalSocket* connection)
{
    check(expectedDataSize_.value(connection) == 0, "expectedDataSize_ == 0", __LINE__);
    if (connection->bytesAvailable() < 4) {
        return;
    }
    qint32 size = 0;
    QDataStream(connection->read(4)) >> size;
    if (size > maximumMessageSize) {
        qWarning("handleNewDataSize: %d bytes announced, more than allowed; connection dropped",
                 size);
        dropConnection(connection);
        return;
    }
    expectedDataSize_[connection] = qMax(size, 0); // 0 or less: no message pending
}

void LocalSocketStringMessageReceiver::handleNewDataValue(QLocalSocket* connection)
{
    const qint32 expected = expectedDataSize_.value(connection);
    check(expected > 0, "expectedDataSize_ > 0", __LINE__);
    if (connection->bytesAvailable() < expected) {
        return; // wait for the rest
    }
    QByteArray payload = connection->read(expected);
    const int zero = payload.indexOf('\0');
    if (zero >= 0) {
        payload.truncate(zero);
    }
    expectedDataSize_[connection] = 0;
    const bool taken = callback && callback(QString::fromUtf8(payload));
    connection->write(taken ? "\1" : "\0", 1);
}

void LocalSocketStringMessageReceiver::dropConnection(QLocalSocket* connection)
{
    if (expectedDataSize_.remove(connection) == 0) {
        return;
    }
    connection->disconnect(this);
    connection->close();
    connection->deleteLater();
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
