// Helper process for the plug-in manager's test: starts the plug-in "TwoServices", whose
// initialize() fails after its first service has registered, and shuts down as the start-up
// manager does: the plug-in manager first (which unloads the plug-in and so deletes its
// services), then the service manager. On standard output it reports the services still
// registered after the unload, and "shut down" at the end.

#include "FakeManagers.h"

#include "Plugins/PluginManager.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QDomDocument>

#include <cstdio>

using corvane::base::business::ManagerRegistry;
using corvane::base::business::PluginManager;
using corvane::base::business::ServiceManager;
using corvane::base::entities::PluginConfiguration;

namespace {

class ConfigurationManager : public fakes::ConfigurationManager
{
public:
    void getPluginConfiguration(QList<PluginConfiguration>& configurations) override
    {
        configurations = {PluginConfiguration(QStringLiteral("TwoServices.dll"),
                                              document.createElement("configuration"))};
    }
    QDomDocument document;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    fakes::LoggingManager logging;
    ConfigurationManager configuration;
    ManagerRegistry* registry = ManagerRegistry::instance();
    registry->registerManager(logging);
    registry->registerManager(configuration);
    PluginManager* plugins = PluginManager::instance();
    ServiceManager* services = ServiceManager::instance();
    registry->registerManager(*plugins);
    registry->registerManager(*services);
    plugins->initialize();
    services->initialize();

    registry->unregisterManager(*plugins);
    plugins->deinitialize();
    QStringList registered;
    services->getAvailableServices(registered);
    std::printf("registered after unload: %s\n", qPrintable(registered.join(", ")));
    std::fflush(stdout);
    registry->unregisterManager(*services);
    services->deinitialize();

    registry->unregisterManager(configuration);
    registry->unregisterManager(logging);
    std::puts("shut down");
    return 0;
}
