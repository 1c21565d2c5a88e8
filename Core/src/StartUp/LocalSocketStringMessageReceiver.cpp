#include "StartUp/LocalSocketStringMessageReceiver.h"

#include "Logging/AssertionReport.h"
#include "StartUp/LocalSocketListener.h"

#include <QDataStream>
#include <QDebug>
#include <QDir>
#include <QLocalSocket>
#include <QTimer>

#include <sys/ioctl.h>

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

void LocalSocketStringMessageReceiver::setLimits(const Limits& limits)
{
    this->limits = limits;
}

bool LocalSocketStringMessageReceiver::start(std::function<bool(QString)> callback)
{
    this->callback = std::move(callback);
    cleanupConnection();
    delete server;
    attachMarker();
    server = new LocalSocketListener(this);
    // Out of descriptors, the connections give half of theirs back to the application, and
    // stay at that many from then on.
    server->setRoomMaker([this] {
        limits.connections = qMax(1, int(expectedDataSize_.size()) / 2);
        warnLimit("start",
                  QStringLiteral("out of descriptors; at most %1 connections at once")
                      .arg(limits.connections));
        bool closed = false;
        while (expectedDataSize_.size() > limits.connections && closeLongestIdle()) {
            closed = true;
        }
        return closed;
    });
    connect(server, &LocalSocketListener::newConnection, this,
            &LocalSocketStringMessageReceiver::handleNewConnection);
    connect(server, &LocalSocketListener::acceptFailed, this, [this](const QString& reason) {
        warnLimit("start", QStringLiteral("no connection accepted (%1); trying again").arg(reason));
    });
    if (!idleCheck) {
        idleCheck = new QTimer(this);
        connect(idleCheck, &QTimer::timeout, this,
                &LocalSocketStringMessageReceiver::closeIdleConnections);
    }
    return server->listen(serverName);
}

// A marker that nobody is attached to was left by a receiver that ended without detaching (it
// was killed): attached and detached again here, it is removed, as the last one out removes it.
void LocalSocketStringMessageReceiver::removeDeadMarker()
{
    if (sharedMemory.attach(QSharedMemory::ReadOnly)) {
        sharedMemory.detach();
    }
}

// Senders attach to the marker and detach again, and the last one to detach removes it, so it
// may come and go while this receiver looks: attach, else create, until one works. Creating
// goes through an object of its own, since a QSharedMemory whose create() failed no longer
// attaches; the marker outlives it, attached here. The marker is only there for others to see:
// without one (another user took every id) the receiver works all the same.
void LocalSocketStringMessageReceiver::attachMarker()
{
    removeDeadMarker();
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
        } else if (creator.error() != QSharedMemory::AlreadyExists || attempt == 99) {
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

void LocalSocketStringMessageReceiver::handleNewConnection(QLocalSocket* connection)
{
    if (expectedDataSize_.size() >= limits.connections) {
        closeLongestIdle();
        warnLimit("handleNewConnection",
                  QStringLiteral("more than %1 connections at once; the one idle longest closed")
                      .arg(limits.connections));
    }
    expectedDataSize_.insert(connection, 0);
    idleSince[connection].start();
    if (!idleCheck->isActive()) {
        idleCheck->start(qMax(1, limits.idleTimeoutMs / 4));
    }
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

void LocalSocketStringMessageReceiver::handleNewData()
{
    if (auto* connection = qobject_cast<QLocalSocket*>(sender())) {
        if (idleSince.contains(connection)) {
            idleSince[connection].start();
        }
        readAll(connection);
        keepToBudget();
    }
}

bool LocalSocketStringMessageReceiver::closeLongestIdle()
{
    QLocalSocket* longest = nullptr;
    for (auto it = idleSince.cbegin(); it != idleSince.cend(); ++it) {
        if (!longest || it.value().elapsed() > idleSince.value(longest).elapsed()) {
            longest = it.key();
        }
    }
    if (longest) {
        dropConnection(longest, true);
    }
    return longest != nullptr;
}

namespace {

// Whether bytes wait in the system for the connection (they come in with the next turn of the
// event loop).
bool hasDataWaiting(QLocalSocket* connection)
{
    int waiting = 0;
    return ::ioctl(int(connection->socketDescriptor()), FIONREAD, &waiting) == 0 && waiting > 0;
}

} // namespace

// Data that came while this process did not run (it was stopped) keeps its connection from
// counting as idle.
void LocalSocketStringMessageReceiver::closeIdleConnections()
{
    const QList<QLocalSocket*> connections = idleSince.keys();
    for (QLocalSocket* connection : connections) {
        if (idleSince.contains(connection)
            && idleSince.value(connection).hasExpired(limits.idleTimeoutMs)
            && !hasDataWaiting(connection)) {
            warnLimit(
                "closeIdleConnections",
                QStringLiteral("a connection idle for %1 ms closed").arg(limits.idleTimeoutMs));
            dropConnection(connection, true);
        }
    }
    if (idleSince.isEmpty()) {
        idleCheck->stop();
    }
}

// Unread bytes wait in the connections' buffers until their frame is complete; over the budget,
// the connection that holds the most of them is closed.
void LocalSocketStringMessageReceiver::keepToBudget()
{
    for (;;) {
        qint64 total = 0;
        QLocalSocket* largest = nullptr;
        for (QLocalSocket* connection : expectedDataSize_.keys()) {
            total += connection->bytesAvailable();
            if (!largest || connection->bytesAvailable() > largest->bytesAvailable()) {
                largest = connection;
            }
        }
        if (total <= limits.unreadBytes) {
            return;
        }
        warnLimit("keepToBudget",
                  QStringLiteral("more than %1 unread bytes; the connection holding %2 closed")
                      .arg(limits.unreadBytes)
                      .arg(largest->bytesAvailable()));
        dropConnection(largest, true);
    }
}

void LocalSocketStringMessageReceiver::warnLimit(const char* operation, const QString& text)
{
    if (lastWarning.isValid() && !lastWarning.hasExpired(warningIntervalMs)) {
        ++warningsHeldBack;
        return;
    }
    QString line = QLatin1String(operation) + QStringLiteral(": peer limit: ") + text;
    if (warningsHeldBack > 0) {
        line += QStringLiteral(" (%1 more since the last such line)").arg(warningsHeldBack);
    }
    qWarning().noquote() << line;
    lastWarning.start();
    warningsHeldBack = 0;
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
        warnLimit(
            "handleNewDataSize",
            QStringLiteral("%1 bytes announced, more than allowed; connection dropped").arg(size));
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

// Closed at once, the connection gives its descriptor back now, and what it still had to send
// is dropped.
void LocalSocketStringMessageReceiver::dropConnection(QLocalSocket* connection, bool atOnce)
{
    idleSince.remove(connection);
    if (expectedDataSize_.remove(connection) == 0) {
        return;
    }
    connection->disconnect(this);
    // Acknowledgements of the messages it sent before still reach the peer: the socket is
    // deleted before the event loop would write them.
    connection->flush();
    if (atOnce) {
        connection->abort();
    } else {
        connection->close();
    }
    connection->deleteLater();
}

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
