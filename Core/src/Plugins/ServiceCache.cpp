#include "Plugins/ServiceCache.h"

#include "Interfaces/IServiceManager.h"
#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QMetaObject>

namespace corvane {
namespace base {
namespace business {

using interfaces::IService;

QHash<QString, IService*> ServiceCache::cache;

ServiceCache::ServiceCache() = default;

void ServiceCache::addServiceToCache(IService* service)
{
    if (service == nullptr) {
        return;
    }
    for (const QMetaObject* meta = service->metaObject();
         meta != nullptr && meta->className() != IService::staticMetaObject.className();
         meta = meta->superClass()) {
        const QString key = QString::fromLatin1(meta->className());
        cache.remove(key);
        cache.insert(key, service);
    }
}

void ServiceCache::removeServiceFromCache(IService* service)
{
    for (const QString& key : cache.keys(service)) {
        cache.remove(key);
    }
}

IService* ServiceCache::getServiceByInterface(const QString& name)
{
    const auto cached = cache.constFind(name);
    if (cached != cache.constEnd()) {
        return cached.value();
    }
    interfaces::IServiceManager* serviceManager = ManagerRegistry::instance()->getServiceManager();
    QStringList names;
    serviceManager->getServicesByInterface(name, names);
    if (names.isEmpty()) {
        return nullptr;
    }
    IService* service = serviceManager->getService(names.first());
    cache.insert(name, service);
    return service;
}

interfaces::ILoggingManager* ServiceCache::getLogger()
{
    try {
        return ManagerRegistry::instance()->getLoggingManager();
    } catch (...) {
        return LoggingManager::instance();
    }
}

} // namespace business
} // namespace base
} // namespace corvane
