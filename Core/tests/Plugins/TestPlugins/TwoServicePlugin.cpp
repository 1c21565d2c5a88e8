// A plug-in whose start fails half-way: of its two services the first initializes and
// registers itself, the second needs an interface that no service offers, so its initialize()
// throws and the plug-in's initialize() with it.

#include <Utility/AbstractPlugin.h>
#include <Utility/AbstractService.h>

namespace corvane {
namespace test {

class FirstService : public base::core::utility::AbstractService
{
    Q_OBJECT
};

class SecondService : public base::core::utility::AbstractService
{
    Q_OBJECT

public:
    SecondService()
    {
        assignMemberToServiceName(&missing, QStringLiteral("de.corvane.test.INobody/1.0"));
    }

    QString missing;
};

class TwoServices : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    TwoServices()
    {
        addProvidedService(new FirstService, QStringLiteral("corvane::test::FirstService"));
        addProvidedService(new SecondService, QStringLiteral("corvane::test::SecondService"));
    }
};

} // namespace test
} // namespace corvane

#include "TwoServicePlugin.moc"
