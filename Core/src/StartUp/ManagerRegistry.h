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
    static ManagerRegistry* instance();

    ~ManagerRegistry() override;

    void registerManager(interfaces::IManager& manager);
    void unregisterManager(interfaces::IManager& manager);

    interfaces::IConfigurationManager* getConfigurationManager();
    interfaces::IStartUpManager* getStartUpManager();
    interfaces::IServiceManager* getServiceManager();
    interfaces::IPluginManager* getPluginManager();
    interfaces::ILoggingManager* getLoggingManager();

    bool hasConfigurationManager() const;
    bool hasPluginManager() const;
    bool hasStartUpManager() const;
    bool hasServiceManager() const;
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
