#include "StartUp/ManagerRegistry.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/IConfigurationManager.h"
#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IPluginManager.h"
#include "Interfaces/IServiceManager.h"
#include "Interfaces/IStartUpManager.h"

#include <QMutex>
#include <QMutexLocker>

namespace corvane {
namespace base {
namespace business {

using namespace interfaces;
using exceptions::ManagerRegistryException;

ManagerRegistry* ManagerRegistry::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static ManagerRegistry registry;
    return &registry;
}

ManagerRegistry::ManagerRegistry() = default;

ManagerRegistry::~ManagerRegistry()
{
    configurationManager_ = nullptr;
    pluginManager_ = nullptr;
    startUpManager_ = nullptr;
    serviceManager_ = nullptr;
    loggingManager_ = nullptr;
}

// The kinds are tested in a fixed order and a failure leaves the kinds before it as they are:
// callers rely on exactly this partial effect, so there is no roll-back.
void ManagerRegistry::registerManager(IManager& manager)
{
    fill(configurationManager_, manager, "ConfigurationManager already registered!");
    fill(startUpManager_, manager, "StartUpManager already registered!");
    fill(serviceManager_, manager, "ServiceManager already registered!");
    fill(pluginManager_, manager, "PluginManager already registered!");
    fill(loggingManager_, manager, "loggingManager already registered!");
}

void ManagerRegistry::unregisterManager(IManager& manager)
{
    QString name;
    manager.getName(name);
    clear(configurationManager_, manager, "ConfigurationManager already unregistered!");
    clear(startUpManager_, manager, "StartUpManager already unregistered!");
    clear(serviceManager_, manager, "ServiceManager already unregistered!");
    clear(pluginManager_, manager, "PluginManager already unregistered!");
    clear(loggingManager_, manager, "loggingManager already unregistered!");
}

IConfigurationManager* ManagerRegistry::getConfigurationManager()
{
    return get(configurationManager_, "getConfigurationManager",
               "ConfigurationManager not registered!");
}

IStartUpManager* ManagerRegistry::getStartUpManager()
{
    return get(startUpManager_, "getStartUpManager", "StartUpManager not registered!");
}

IServiceManager* ManagerRegistry::getServiceManager()
{
    return get(serviceManager_, "getServiceManager", "ServiceManager not registered!");
}

IPluginManager* ManagerRegistry::getPluginManager()
{
    return get(pluginManager_, "getPluginManager", "PluginManager not registered!");
}

ILoggingManager* ManagerRegistry::getLoggingManager()
{
    return get(loggingManager_, "getLoggingManager", "loggingManager not registered!");
}

bool ManagerRegistry::hasConfigurationManager() const
{
    return configurationManager_ != nullptr;
}

bool ManagerRegistry::hasPluginManager() const
{
    return pluginManager_ != nullptr;
}

bool ManagerRegistry::hasStartUpManager() const
{
    return startUpManager_ != nullptr;
}

bool ManagerRegistry::hasServiceManager() const
{
    return serviceManager_ != nullptr;
}

bool ManagerRegistry::hasLoggingManager() const
{
    return loggingManager_ != nullptr;
}

template <class Interface>
void ManagerRegistry::fill(Interface*& slot, IManager& manager, const char* alreadyRegistered)
{
    auto* implementation = dynamic_cast<Interface*>(&manager);
    if (implementation == nullptr) {
        return;
    }
    if (slot != nullptr) {
        throw ManagerRegistryException(this, QStringLiteral("registerManager"),
                                       QString::fromLatin1(alreadyRegistered));
    }
    slot = implementation;
}

// The slot is emptied whichever object it holds; only the kind of the given manager counts.
template <class Interface>
void ManagerRegistry::clear(Interface*& slot, IManager& manager, const char* alreadyUnregistered)
{
    if (dynamic_cast<Interface*>(&manager) == nullptr) {
        return;
    }
    if (slot == nullptr) {
        throw ManagerRegistryException(this, QStringLiteral("unregisterManager"),
                                       QString::fromLatin1(alreadyUnregistered));
    }
    slot = nullptr;
}

template <class Interface>
Interface* ManagerRegistry::get(Interface* slot, const char* method, const char* notRegistered)
{
    if (slot == nullptr) {
        throw ManagerRegistryException(this, QString::fromLatin1(method),
                                       QString::fromLatin1(notRegistered));
    }
    return slot;
}

} // namespace business
} // namespace base
} // namespace corvane
