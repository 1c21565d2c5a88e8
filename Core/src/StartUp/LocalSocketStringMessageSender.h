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
    /// A sender to the server serverName that waits at most timeout milliseconds for each step.
    LocalSocketStringMessageSender(QString serverName, int timeout);

    /// False at once when no receiver's marker exists; else whether the connection came up
    /// within the time-out.
    bool connectToReceiver();
    /// Sends value as one frame and waits until it has been written.
    void sendValue(const QString& value);
    /// Whether the receiver took the message sent before, within the time-out.
    bool waitForAcknowledgement();
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
