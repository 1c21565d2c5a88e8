#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>
#include <QVector>

#include <functional>

class QLocalSocket;
class QSocketNotifier;
class QTimer;

namespace corvane {
namespace base {
namespace business {
namespace internal {

/**
 * A listening local socket that outlives a shortage of file descriptors. QLocalServer closes
 * itself and removes its socket file when accept() fails; this one keeps listening: when the
 * process runs out of descriptors it asks its owner to make room (close a connection), else it
 * tries again a moment later. A few descriptors are held in reserve and given back to the
 * process while it makes room and reports the shortage, since that work may need descriptors
 * itself (a log that rolls over opens a file; a sanitized build's checks open a pipe). Accepted
 * connections are close-on-exec and handed over as QLocalSocket objects that the receiver of
 * newConnection() owns.
 */
class CORE_EXPORT LocalSocketListener : public QObject
{
    Q_OBJECT

public:
    /// How long accepting pauses, in milliseconds, when no room could be made.
    static constexpr int retryDelayMs = 250;
    /// How many descriptors are held in reserve for a shortage.
    static constexpr int reservedDescriptors = 3;

    /// A listener that does not listen yet (listen()).
    explicit LocalSocketListener(QObject* parent = nullptr);
    ~LocalSocketListener() override;

    /// Listens on the socket file: the name itself when it is an absolute path, else the name
    /// in the temporary folder. The file is for the user only (mode 0600).
    bool listen(const QString& name);
    /// Stops listening and removes the socket file, if it is still the one made here.
    void close();
    /// Whether it listens.
    bool isListening() const;
    /// The path of the socket file given to the last listen().
    QString fullServerName() const;
    /// Why the last listen() failed.
    QString errorString() const;
    /// Called when accept() finds no free descriptor; answers whether it closed a connection.
    void setRoomMaker(std::function<bool()> roomMaker);

signals:
    /// A connection was accepted.
    void newConnection(QLocalSocket* connection);
    /// accept() failed for want of descriptors or memory; the reason.
    void acceptFailed(const QString& reason);

private:
    void acceptAll();
    void takeReserve();
    void releaseReserve();

    int descriptor = -1;
    unsigned long long device = 0; // of the socket file made here
    unsigned long long inode = 0;
    QString path;
    QString error;
    QSocketNotifier* notifier = nullptr;
    QTimer* retry = nullptr;
    std::function<bool()> roomMaker;
    QVector<int> reserve; // descriptors on /dev/null, kept for a shortage
};

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
