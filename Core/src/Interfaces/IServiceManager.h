#pragma once

#include "Interfaces/IManager.h"
#include "Interfaces/IService.h"

#include <QStringList>

namespace corvane {
namespace base {
namespace interfaces {

/// Registry of the services that plug-ins offer, by name and by interface.
class CORE_EXPORT IServiceManager : public IManager
{
    Q_OBJECT

public:
    /// Creates the manager as a child of parent.
    explicit IServiceManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IServiceManager() override = default;

    /// Enters service under its own name (getName()); throws when that name is taken.
    virtual void registerService(IService& service) = 0;
    /// Removes the service of that name (without deleting it); throws when there is none.
    virtual void unregisterService(QString& serviceName) = 0;
    /// The registered service of that name; throws when there is none.
    virtual IService* getService(const QString& serviceName) = 0;
    /// Replaces the content of serviceNames with the names of the services that implement
    /// interfaceName: an interface id declared with Q_INTERFACES or a class name of the service's
    /// class chain.
    virtual void getServicesByInterface(const QString& interfaceName, QStringList& serviceNames)
        = 0;
    /// Replaces the content of serviceNames with the names of all registered services.
    virtual void getAvailableServices(QStringList& serviceNames) = 0;
    /// Whether a service of that name is registered.
    virtual bool isServiceAvailable(const QString& serviceName) = 0;

signals:
    /// A service was registered under aServiceName.
    void signalServiceAvailable(QString aServiceName);
    /// The service of aServiceName was unregistered.
    void signalServiceUnavailable(QString aServiceName);
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IServiceManager, "de.corvane.ServiceManager/1.0")
