#include "Plugins/ServiceManager.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/ManagerRegistry.h"

#include <QDebug>
#include <QMutex>
#include <QMutexLocker>

namespace corvane {
namespace base {
namespace business {

using interfaces::IService;

ServiceManager* ServiceManager::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static ServiceManager manager;
    return &manager;
}

ServiceManager::ServiceManager() : loggingManager(ManagerRegistry::instance()->getLoggingManager())
{
}

ServiceManager::~ServiceManager() = default;

void ServiceManager::initialize()
{
    qInfo("init called");
}

void ServiceManager::deinitialize()
{
    qInfo("deinit called");
    const QStringList keys = services.keys();
    for (QString key : keys) {
        IService* service = services.value(key);
        if (!services.isEmpty() && services.contains(key) && service != nullptr) {
            service->getName(key);
            unregisterService(key);
        } else {
            qInfo().noquote() << QStringLiteral("deinit Pointer for service already NULL: ") + key;
        }
    }
    qInfo("deinit done");
}

void ServiceManager::getName(QString& name)
{
    name = QStringLiteral("ServiceManager");
}

void ServiceManager::getVersion(QString& version)
{
    version = QStringLiteral("1.0.0");
}

void ServiceManager::registerService(IService& service)
{
    QString name;
    service.getName(name);
    if (isServiceAvailable(name)) {
        // No blank after the colon in the reason, unlike the log line; callers match on it.
        fail("registerService",
             QStringLiteral("registerService Service already registered: ") + name,
             QStringLiteral("Service already registered:") + name);
    }
    services.insert(name, &service);
    qInfo().noquote() << QStringLiteral("registerService Service registered: ") + name;
    emit signalServiceAvailable(name);
}

void ServiceManager::unregisterService(QString& aServiceName)
{
    if (!isServiceAvailable(aServiceName)) {
        fail("unregisterService",
             QStringLiteral("unregisterService Service not available: ") + aServiceName,
             QStringLiteral("Service not available: ") + aServiceName);
    }
    services.remove(aServiceName);
    qInfo().noquote() << QStringLiteral("unregisterService Service unregistered: ") + aServiceName;
    emit signalServiceUnavailable(aServiceName);
}

IService* ServiceManager::getService(const QString& aServiceName)
{
    if (!isServiceAvailable(aServiceName)) {
        fail("getService", QStringLiteral("getService Service not available: ") + aServiceName,
             QStringLiteral("Service not available: ") + aServiceName);
    }
    return services.value(aServiceName);
}

// qt_metacast answers for every interface id a service declares with Q_INTERFACES and for
// every class name of its class chain.
void ServiceManager::getServicesByInterface(const QString& interfaceName, QStringList& serviceNames)
{
    qDebug().noquote() << QStringLiteral("getServicesByInterface: get services implementing: ")
            + interfaceName;
    serviceNames.clear();
    const QByteArray id = interfaceName.toUtf8();
    for (auto entry = services.cbegin(); entry != services.cend(); ++entry) {
        if (entry.value() != nullptr && entry.value()->qt_metacast(id.constData()) != nullptr) {
            qDebug().noquote() << QStringLiteral("getServicesByInterface: adding service to list: ")
                    + entry.key();
            serviceNames.append(entry.key());
        }
    }
}

void ServiceManager::getAvailableServices(QStringList& serviceNames)
{
    qDebug("getAvailableServices: called ");
    serviceNames.clear();
    serviceNames.append(services.keys());
}

bool ServiceManager::isServiceAvailable(const QString& aServiceName)
{
    return services.contains(aServiceName);
}

void ServiceManager::fail(const char* method, const QString& logged, const QString& reason)
{
    qCritical().noquote() << logged;
    throw exceptions::ServiceManagerException(this, QString::fromLatin1(method), reason);
}

} // namespace business
} // namespace base
} // namespace corvane
