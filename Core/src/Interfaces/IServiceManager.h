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
    explicit IServiceManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IServiceManager() override = default;

    virtual void registerService(IService& service) = 0;
    virtual void unregisterService(QString& serviceName) = 0;
    virtual IService* getService(const QString& serviceName) = 0;
    virtual void getServicesByInterface(const QString& interfaceName, QStringList& serviceNames)
        = 0;
    virtual void getAvailableServices(QStringList& serviceNames) = 0;
    virtual bool isServiceAvailable(const QString& serviceName) = 0;

signals:
    void signalServiceAvailable(QString aServiceName);
    void signalServiceUnavailable(QString aServiceName);
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IServiceManager, "de.corvane.ServiceManager/1.0")
