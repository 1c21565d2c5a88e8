#pragma once

#include "CoreExport.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QSharedMemory>

#include <functional>

class QLocalSocket;
class QTimer;

namespace corvane {
namespace base {
namespace business {
namespace internal {

class LocalSocketListener;

/**
 * Receives the strings that LocalSocketStringMessageSender sends and hands each to a callback,
 * on the receiver's thread. Frames may arrive in pieces or several in one read; a text is cut
 * at its first zero byte; a length of 0 or less carries no message. Every connection is read
 * on its own, so a peer that sends nothing blocks nobody; one that declares more than 16 MiB
 * is dropped. Each message handed to the callback is answered with one byte: 1 when the
 * callback took it, else 0.
 *
 * Peers are bounded (see Limits): at most so many connections at once (a further one closes
 * the one idle longest), none idle for long, and no more unread bytes than the budget over all
 * connections (beyond it the connection holding the most is closed). The server keeps
 * listening when the process runs out of descriptors. A peer that meets a limit gets one
 * warning line, at most one every warningIntervalMs for all of them.
 */
class CORE_EXPORT LocalSocketStringMessageReceiver : public QObject
{
    Q_OBJECT

public:
    /// The longest message taken, in bytes; a connection that declares a longer one is dropped.
    static constexpr qint32 maximumMessageSize = 16 * 1024 * 1024;
    /// The shortest time between two warnings about peers that meet a limit, in milliseconds.
    static constexpr int warningIntervalMs = 10000;

    /// The bounds on the peers.
    struct Limits
    {
        /// The most connections open at once.
        int connections = 64; // open at once
        /// How long a connection may go without a byte from its peer, in milliseconds.
        int idleTimeoutMs = 30000; // without a byte from the peer
        /// The most bytes received and not yet handed on, over all connections.
        qint64 unreadBytes = 2 * (4 + qint64(maximumMessageSize)); // over all connections
    };

    /// A receiver for the server serverName; nothing listens until start().
    explicit LocalSocketStringMessageReceiver(QString serverName);
    ~LocalSocketStringMessageReceiver() override;

    /// For tests: other limits for the connections accepted from now on.
    void setLimits(const Limits& limits);

    /// Creates the marker that senders look for and listens; answers whether listening works.
    bool start(std::function<bool(QString)> callback);
    /// Drops every connection.
    void cleanupConnection();

    /// The file that keys the shared-memory marker of a server whose name is an absolute path
    /// (the socket file): beside the socket, not in the temporary folder.
    static QString markerFileOf(const QString& serverName);

private slots:
    void handleNewConnection(QLocalSocket* connection);
    void handleNewData();

private:
    void attachMarker();
    void removeDeadMarker();
    bool closeLongestIdle();
    void closeIdleConnections();
    void keepToBudget();
    void warnLimit(const char* operation, const QString& text);
    void readAll(QLocalSocket* connection);
    bool handleNextData(QLocalSocket* connection);
    void handleNewDataSize(QLocalSocket* connection);
    void handleNewDataValue(QLocalSocket* connection);
    void dropConnection(QLocalSocket* connection, bool atOnce = false);

    QString serverName;
    QSharedMemory sharedMemory;
    std::function<bool(QString)> callback;
    LocalSocketListener* server = nullptr;
    QHash<QLocalSocket*, qint32> expectedDataSize_; // per connection: 0 while a length is awaited
    QHash<QLocalSocket*, QElapsedTimer> idleSince;
    QTimer* idleCheck = nullptr;
    Limits limits;
    QElapsedTimer lastWarning;
    int warningsHeldBack = 0;
};

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
