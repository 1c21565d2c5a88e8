#pragma once

#include "CoreExport.h"

#include <QHash>
#include <QObject>
#include <QSharedMemory>

#include <functional>

class QLocalServer;
class QLocalSocket;

namespace corvane {
namespace base {
namespace business {
namespace internal {

/**
 * Receives the strings that LocalSocketStringMessageSender sends and hands each to a callback,
 * on the receiver's thread. Frames may arrive in pieces or several in one read; a text is cut
 * at its first zero byte; a length of 0 or less carries no message. Every connection is read
 * on its own, so a peer that sends nothing blocks nobody; one that declares more than 16 MiB
 * is dropped. Each message handed to the callback is answered with one byte: 1 when the
 * callback took it, else 0.
 */
class CORE_EXPORT LocalSocketStringMessageReceiver : public QObject
{
    Q_OBJECT

public:
    /// The longest message taken, in bytes; a connection that declares a longer one is dropped.
    static constexpr qint32 maximumMessageSize = 16 * 1024 * 1024;

    /// A receiver for the server serverName; nothing listens until start().
    explicit LocalSocketStringMessageReceiver(QString serverName);
    ~LocalSocketStringMessageReceiver() override;

    /// Creates the marker that senders look for and listens; answers whether listening works.
    bool start(std::function<bool(QString)> callback);
    /// Drops every connection.
    void cleanupConnection();

    /// The file that keys the shared-memory marker of a server whose name is an absolute path
    /// (the socket file): beside the socket, not in the temporary folder.
    static QString markerFileOf(const QString& serverName);

private slots:
    void handleNewConnection();
    void handleNewData();

private:
    void attachMarker();
    void readAll(QLocalSocket* connection);
    bool handleNextData(QLocalSocket* connection);
    void handleNewDataSize(QLocalSocket* connection);
    void handleNewDataValue(QLocalSocket* connection);
    void dropConnection(QLocalSocket* connection);

    QString serverName;
    QSharedMemory sharedMemory;
    std::function<bool(QString)> callback;
    QLocalServer* server = nullptr;
    QHash<QLocalSocket*, qint32> expectedDataSize_; // per connection: 0 while a length is awaited
};

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
