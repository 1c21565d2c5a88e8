#include "StartUp/StartUpManager.h"

#include "Interfaces/IPluginManager.h"
#include "Interfaces/IServiceManager.h"
#include "Plugins/PluginManager.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QMutexLocker>

namespace corvane {
namespace base {
namespace business {

StartUpManager* StartUpManager::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static StartUpManager manager;
    return &manager;
}

StartUpManager::StartUpManager() : loggingManager(ManagerRegistry::instance()->getLoggingManager())
{
}

StartUpManager::~StartUpManager() = default;

void StartUpManager::initialize()
{
    qInfo("init called");
    QDir::setCurrent(QCoreApplication::applicationDirPath());
    initManagers();
}

void StartUpManager::initManagers()
{
    ManagerRegistry* registry = ManagerRegistry::instance();
    registry->registerManager(*PluginManager::instance());
    registry->registerManager(*ServiceManager::instance());
    registry->getPluginManager()->initialize();
    registry->getServiceManager()->initialize();
}

// Each manager leaves the registry before it shuts down, so nothing reaches it meanwhile.
void StartUpManager::deinitialize()
{
    qInfo("deinit called");
    QMutexLocker locker(&mutex);
    ManagerRegistry* registry = ManagerRegistry::instance();
    interfaces::IPluginManager* pluginManager = registry->getPluginManager();
    registry->unregisterManager(*pluginManager);
    pluginManager->deinitialize();
    interfaces::IServiceManager* serviceManager = registry->getServiceManager();
    registry->unregisterManager(*serviceManager);
    serviceManager->deinitialize();
}

void StartUpManager::getName(QString& name)
{
    name = QStringLiteral("StartUpManager");
}

void StartUpManager::getVersion(QString& version)
{
    version = QStringLiteral("1.0.0");
}

} // namespace business
} // namespace base
} // namespace corvane
