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
 * signed 32-bit big-endian length and the UTF-8 bytes.
 */
class CORE_EXPORT LocalSocketStringMessageSender
{
public:
    LocalSocketStringMessageSender(QString serverName, int timeout);

    /// False at once when no receiver's marker exists; else whether the connection came up
    /// within the time-out.
    bool connectToReceiver();
    void sendValue(const QString& value);
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
