#pragma once

#include "CoreExport.h"

#include <Qt>

class QObject;

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace core {
namespace utility {

/**
 * Signal-slot connections with every pointer checked first, as AbstractPlugin and
 * AbstractService offer them. owner raises the exceptions and logs, through logger, under its
 * own class name.
 */
class CORE_EXPORT GuardedConnection
{
public:
    /// Throws NullPointerException for the first null of sender, signal, receiver, member, and
    /// ConnectFailedException when Qt refuses the connection.
    static void connect(const QObject* owner, base::interfaces::ILoggingManager* logger,
                        const QObject* sender, const char* signal, const QObject* receiver,
                        const char* member, Qt::ConnectionType type);
    /// Never throws: a null pointer or a failed disconnection is only logged.
    static void disconnect(const QObject* owner, base::interfaces::ILoggingManager* logger,
                           const QObject* sender, const char* signal, const QObject* receiver,
                           const char* member);
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
