// A user's code built against the installed library: a service with an interface of its own,
// the plug-in that provides it, and the framework finding it by the interface id. It must
// compile from the installed headers alone and run against the installed library.

#include <Exceptions/Exceptions.h>
#include <Logging/LoggingManager.h>
#include <Plugins/ServiceCache.h>
#include <Plugins/ServiceManager.h>
#include <StartUp/ManagerRegistry.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/AbstractService.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstring>

#ifndef QT_MESSAGELOGCONTEXT
#error "Corvane::Core must pass QT_MESSAGELOGCONTEXT on to its users"
#endif

namespace example {

class IGreeter
{
public:
    virtual ~IGreeter() = default;
    virtual QString greet(const QString& name) = 0;
};

} // namespace example

Q_DECLARE_INTERFACE(example::IGreeter, "de.example.IGreeter/1.0")

namespace example {

class Greeter : public corvane::base::core::utility::AbstractService, public IGreeter
{
    Q_OBJECT
    Q_INTERFACES(example::IGreeter)

public:
    QString greet(const QString& name) override { return QStringLiteral("Hello ") + name; }
};

class GreeterPlugin : public corvane::base::core::utility::AbstractPlugin
{
    Q_OBJECT

public:
    GreeterPlugin() { addProvidedService(new Greeter, QStringLiteral("example::Greeter")); }
};

} // namespace example

namespace {

bool fail(const char* what)
{
    std::fprintf(stderr, "consumer: %s\n", what);
    return false;
}

bool registryExplainsAMissingManager()
{
    try {
        corvane::base::business::ManagerRegistry::instance()->getLoggingManager();
    } catch (const corvane::base::exceptions::ManagerRegistryException& e) {
        return std::strcmp(e.what(),
                           "corvane::base::business::ManagerRegistry::getLoggingManager "
                           "loggingManager not registered!")
            == 0
            || fail(e.what());
    }
    return fail("no exception");
}

bool pluginProvidesItsService()
{
    using namespace corvane::base::business;
    ManagerRegistry::instance()->registerManager(*LoggingManager::instance());
    ManagerRegistry::instance()->registerManager(*ServiceManager::instance());

    example::GreeterPlugin plugin;
    plugin.initialize();
    auto* service = ServiceCache::getServiceByInterface(QStringLiteral("de.example.IGreeter/1.0"));
    auto* greeter = qobject_cast<example::IGreeter*>(service);
    const bool greeted = greeter != nullptr && greeter->greet("you") == QLatin1String("Hello you");
    ServiceCache::removeServiceFromCache(service);
    plugin.deinitialize();
    return greeted || fail("the greeter was not found by its interface");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    return registryExplainsAMissingManager() && pluginProvidesItsService() ? 0 : 1;
}

#include "main.moc"
