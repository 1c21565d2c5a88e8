#pragma once

#include "CoreExport.h"

#include <QHash>
#include <QString>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
class IService;
} // namespace interfaces
namespace business {

/**
 * A process-wide shortcut from an interface id or class name to a service, so that code does
 * not ask the service manager each time. Entries are only dropped by removeServiceFromCache():
 * the owner of a service removes it before destroying it, also after unregistering it.
 * Main thread only.
 */
class CORE_EXPORT ServiceCache
{
public:
    /// Does nothing; every member is static.
    ServiceCache();

    /// Enters the service under its class and every class up to (not including) IService.
    static void addServiceToCache(interfaces::IService* service);
    /// Removes every entry that points at the service.
    static void removeServiceFromCache(interfaces::IService* service);
    /// The cached service, else the first one the service manager finds (then cached), else null.
    static interfaces::IService* getServiceByInterface(const QString& name);
    /// The registered logging manager, else LoggingManager::instance().
    static interfaces::ILoggingManager* getLogger();

private:
    static QHash<QString, interfaces::IService*> cache;
};

} // namespace business
} // namespace base
} // namespace corvane
