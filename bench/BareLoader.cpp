// Loads the plug-in libraries named on its command line with QPluginLoader and makes their root
// objects, nothing more: the floor of what a plug-in can add to an application's start.

#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QPluginLoader>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    // A plug-in's base class takes the logging manager when it is made.
    corvane::base::business::ManagerRegistry::instance()->registerManager(
        *corvane::base::business::LoggingManager::instance());
    for (int i = 1; i < argc; ++i) {
        QPluginLoader loader(QString::fromLocal8Bit(argv[i]));
        if (!loader.load() || loader.instance() == nullptr) {
            return 1;
        }
    }
    return 0;
}
