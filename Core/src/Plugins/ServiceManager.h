#pragma once

#include "Interfaces/IServiceManager.h"

#include <QHash>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace business {

/**
 * The registry of services, by name. A service is found by its name, or by any interface id it
 * declares with Q_INTERFACES and any class name of its class chain (getServicesByInterface).
 * The manager does not own the services. Used on the main thread only.
 */
class CORE_EXPORT ServiceManager : public interfaces::IServiceManager
{
    Q_OBJECT
    Q_INTERFACES(corvane::base::interfaces::IManager corvane::base::interfaces::IServiceManager)

public:
    /// The process-wide manager, created on first call.
    static ServiceManager* instance();

    ~ServiceManager() override;

    /// Logs that it was called; the registry starts empty.
    void initialize() override;
    /// Unregisters every service (without deinitializing it).
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;
    void registerService(interfaces::IService& service) override;
    void unregisterService(QString& aServiceName) override;
    interfaces::IService* getService(const QString& aServiceName) override;
    void getServicesByInterface(const QString& interfaceName, QStringList& serviceNames) override;
    void getAvailableServices(QStringList& serviceNames) override;
    bool isServiceAvailable(const QString& aServiceName) override;

private:
    ServiceManager();
    Q_DISABLE_COPY(ServiceManager)

    [[noreturn]] void fail(const char* method, const QString& logged, const QString& reason);

    QHash<QString, interfaces::IService*> services;
    interfaces::ILoggingManager* loggingManager;
};

} // namespace business
} // namespace base
} // namespace corvane
