#pragma once

#include "CoreExport.h"

#include <QLocalSocket>
#include <QSharedMemory>
#include <QString>

namespace corvane {
namespace base {
namespace business {
namespace internal {

/**
 * Sends strings to a LocalSocketStringMessageReceiver of the same server name: each as a
 * signed 32-bit big-endian length and the UTF-8 bytes. The receiver answers every message it
 * has taken with one byte, so that a sender can tell a delivered message from one that only
 * reached the socket. A server name that is an absolute path is the socket file itself.
 */
class CORE_EXPORT LocalSocketStringMessageSender
{
public:
    /// How much of the frames given to sendValues() left this side.
    enum class Written { Nothing, Part, Whole };

    /** \var Nothing
     * None of the frames was written. */
    /** \var Part
     * Some of the frames, not all, were written. */
    /** \var Whole
     * All the frames were written. */
    /// A sender to the server serverName that waits at most timeout milliseconds for each step.
    LocalSocketStringMessageSender(QString serverName, int timeout);

    /// False at once when no receiver's marker exists; else whether the connection came up
    /// within the time-out.
    bool connectToReceiver();
    /// Connects without looking for the marker, for a caller that knows from elsewhere (a lock)
    /// that a receiver runs: whether the connection came up within the time-out.
    bool connectToRunningReceiver();
    /// Sends value as one frame and waits until it has been written.
    void sendValue(const QString& value);
    /// Sends the values as frames in one write and waits up to the time-out for them to leave.
    Written sendValues(const QStringList& values);
    /// Whether the receiver took the message sent before, within the time-out.
    bool waitForAcknowledgement();
    /// How many of the messages sent the receiver answered within the time-out, fewer when it
    /// closed the connection first.
    int waitForAcknowledgements(int count);
    /// Whether the receiver still holds the connection open.
    bool isConnected() const;
    /// Closes the connection to the receiver.
    void disconnectFromReceiver();

private:
    QString serverName;
    int timeout;
    QSharedMemory sharedMemory;
    QLocalSocket socket;
};

} // namespace internal
} // namespace business
} // namespace base
} // namespace corvane
