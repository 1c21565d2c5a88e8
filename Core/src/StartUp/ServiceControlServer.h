#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

class QLocalServer;
class QLocalSocket;

namespace corvane {
namespace base {
namespace business {

/**
 * The running service's control socket: one request per line ("status", "stop", "pause",
 * "resume", "command <number>"), each answered with "ok" or "unknown". Only the service's own
 * user may connect.
 */
class CORE_EXPORT ServiceControlServer : public QObject
{
    Q_OBJECT

public:
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
    void answer(QLocalSocket* connection);

    QLocalServer* server;
};

} // namespace business
} // namespace base
} // namespace corvane
