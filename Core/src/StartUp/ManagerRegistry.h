#pragma once

#include "CoreExport.h"

#include <QObject>

namespace corvane {
namespace base {
namespace interfaces {
class IManager;
class IConfigurationManager;
class IPluginManager;
class IStartUpManager;
class IServiceManager;
class ILoggingManager;
} // namespace interfaces

namespace business {

/**
 * The process-wide place where the five managers are found. It points at them and owns none.
 * A manager is filed under every manager interface it implements, found by its run-time type.
 */
class CORE_EXPORT ManagerRegistry : public QObject
{
    Q_OBJECT

public:
    /// The process-wide registry, created on first call.
    static ManagerRegistry* instance();

    ~ManagerRegistry() override;

    /// Files manager under each manager interface it implements; throws ManagerRegistryException
    /// when a manager of one of those kinds is registered already.
    void registerManager(interfaces::IManager& manager);
    /// Removes manager from each kind it is filed under; throws ManagerRegistryException when one
    /// of its kinds holds no manager.
    void unregisterManager(interfaces::IManager& manager);

    /// The configuration manager; throws ManagerRegistryException when none is registered.
    interfaces::IConfigurationManager* getConfigurationManager();
    /// The start-up manager; throws ManagerRegistryException when none is registered.
    interfaces::IStartUpManager* getStartUpManager();
    /// The service manager; throws ManagerRegistryException when none is registered.
    interfaces::IServiceManager* getServiceManager();
    /// The plug-in manager; throws ManagerRegistryException when none is registered.
    interfaces::IPluginManager* getPluginManager();
    /// The logging manager; throws ManagerRegistryException when none is registered.
    interfaces::ILoggingManager* getLoggingManager();

    /// Whether a configuration manager is registered.
    bool hasConfigurationManager() const;
    /// Whether a plug-in manager is registered.
    bool hasPluginManager() const;
    /// Whether a start-up manager is registered.
    bool hasStartUpManager() const;
    /// Whether a service manager is registered.
    bool hasServiceManager() const;
    /// Whether a logging manager is registered.
    bool hasLoggingManager() const;

private:
    ManagerRegistry();
    Q_DISABLE_COPY(ManagerRegistry)

    template <class Interface>
    void fill(Interface*& slot, interfaces::IManager& manager, const char* alreadyRegistered);
    template <class Interface>
    void clear(Interface*& slot, interfaces::IManager& manager, const char* alreadyUnregistered);
    template <class Interface>
    Interface* get(Interface* slot, const char* method, const char* notRegistered);

    interfaces::IConfigurationManager* configurationManager_ = nullptr;
    interfaces::IPluginManager* pluginManager_ = nullptr;
    interfaces::IStartUpManager* startUpManager_ = nullptr;
    interfaces::IServiceManager* serviceManager_ = nullptr;
    interfaces::ILoggingManager* loggingManager_ = nullptr;
};

} // namespace business
} // namespace base
} // namespace corvane
