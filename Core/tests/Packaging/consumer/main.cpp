// A user's code built against the installed library alone: an exception caught by its type
// across the library's boundary, and a service with an interface of its own, provided by a
// plug-in and found by the framework through the interface id.

#include <Exceptions/Exceptions.h>
#include <Logging/LoggingManager.h>
#include <Plugins/ServiceCache.h>
#include <Plugins/ServiceManager.h>
#include <StartUp/ManagerRegistry.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/AbstractService.h>

#include <QCoreApplication>

#ifndef QT_MESSAGELOGCONTEXT
#error "Corvane::Core must pass QT_MESSAGELOGCONTEXT on to its users"
#endif

class IGreeter
{
public:
    virtual ~IGreeter() = default;
    virtual QString greet(const QString& name) = 0;
};
Q_DECLARE_INTERFACE(IGreeter, "de.example.IGreeter/1.0")

class Greeter : public corvane::base::core::utility::AbstractService, public IGreeter
{
    Q_OBJECT
    Q_INTERFACES(IGreeter)

public:
    QString greet(const QString& name) override { return "Hello " + name; }
};

int main(int argc, char** argv)
{
    using namespace corvane::base::business;
    QCoreApplication application(argc, argv);
    try {
        ManagerRegistry::instance()->getLoggingManager();
        return 1;
    } catch (const corvane::base::exceptions::ManagerRegistryException&) {
    }
    ManagerRegistry::instance()->registerManager(*LoggingManager::instance());
    ManagerRegistry::instance()->registerManager(*ServiceManager::instance());
    struct GreeterPlugin : corvane::base::core::utility::AbstractPlugin
    {
        GreeterPlugin() { addProvidedService(new Greeter, "example::Greeter"); }
    } plugin;
    plugin.initialize();
    auto* service = ServiceCache::getServiceByInterface("de.example.IGreeter/1.0");
    auto* greeter = qobject_cast<IGreeter*>(service);
    const bool greeted = greeter && greeter->greet("you") == "Hello you";
    ServiceCache::removeServiceFromCache(service);
    plugin.deinitialize();
    return greeted ? 0 : 2;
}

#include "main.moc"
