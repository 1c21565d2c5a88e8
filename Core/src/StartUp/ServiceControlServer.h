#pragma once

#include "CoreExport.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>

class QLocalSocket;
class QSocketNotifier;
class QTimer;

namespace corvane {
namespace base {
namespace business {

/**
 * The running service's control socket: one request per line ("status", "stop", "pause",
 * "resume", "command <number>"), each answered with "ok" or "unknown". Only the service's own
 * user may connect.
 *
 * Peers are bounded, so that no client can take the socket away: at most maximumConnections at
 * once (a new one closes the one that has waited longest), idleTimeout without a request closes a
 * connection, and a connection holding more than connectionBudget bytes that were not read yet
 * (its requests, and the answers its peer does not read), or all of them together more than
 * totalBudget, is closed. When no descriptor is left for a new connection, one is freed to
 * accept it and close it again; the socket file stays and the server keeps listening. A peer
 * that meets a limit is reported by one warning line, at most one a minute.
 */
class CORE_EXPORT ServiceControlServer : public QObject
{
    Q_OBJECT

public:
    /// Most connections served at once; a new one closes the one that waited longest.
    static constexpr int maximumConnections = 64;
    /// A connection that sends no request for this long (ms) is closed.
    static constexpr int idleTimeout = 30000;
    /// Unread bytes one connection may hold (requests not yet read, answers not yet taken).
    static constexpr qint64 connectionBudget = 64 * 1024;
    /// Unread bytes all connections together may hold.
    static constexpr qint64 totalBudget = 1024 * 1024;
    /// Shortest time (ms) between two warnings about peers that hit a limit.
    static constexpr int warningInterval = 60000;

    /// Creates the server as a child of parent; it listens from listen() on.
    explicit ServiceControlServer(QObject* parent = nullptr);
    ~ServiceControlServer() override;

    /// Listens on path, replacing a socket file that no live service answers on.
    bool listen(const QString& path);

    /// Sends one request to the service at path; true when it answered "ok".
    static bool request(const QString& path, const QString& text, int timeout = 5000);

signals:
    /// A client sent "stop".
    void stopRequested();
    /// A client sent "pause".
    void pauseRequested();
    /// A client sent "resume".
    void resumeRequested();
    /// A client sent "command number".
    void commandRequested(int number);

private:
    void acceptConnections();
    bool acceptOne();
    bool refuseWithoutDescriptor();
    void adopt(int descriptor);
    void answer(QLocalSocket* connection);
    void enforceBudgets(QLocalSocket* connection);
    void closeIdle();
    QLocalSocket* oldest() const;
    void drop(QLocalSocket* connection, const QString& reason);
    void warn(const QString& reason);

    int listener = -1;
    int spare = -1; // a descriptor kept to be freed when none is left
    QString path;
    quint64 device = 0; // of the socket file, to remove only this server's own
    quint64 inode = 0;
    QSocketNotifier* notifier = nullptr;
    QTimer* idleCheck;
    QHash<QLocalSocket*, QElapsedTimer> connections; // since their last request
    QElapsedTimer lastWarning;
};

} // namespace business
} // namespace base
} // namespace corvane
