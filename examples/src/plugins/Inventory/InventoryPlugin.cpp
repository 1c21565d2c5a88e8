// Provides the inventory, read from the CSV file named in the plug-in's configuration:
//   <configuration><file>${DATA_DIR}/inventory.csv</file></configuration>

#include "Inventory/InventoryService.h"

#include <Exceptions/Exceptions.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/SystemEnvironment.h>
#include <Utility/XMLHelper.h>

#include <QDebug>
#include <QDomElement>

namespace corvane {
namespace demo {

class InventoryPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    InventoryPlugin()
    {
        setDescription(QStringLiteral("Reads the stock from a CSV file"));
        addProvidedService(service, QStringLiteral("corvane::demo::InventoryService"));
    }

    void setConfiguration(QDomElement& configuration) override
    {
        QString file;
        if (!base::core::utility::XMLHelper::readStringFromXML(configuration,
                                                               QStringLiteral("file"), &file)) {
            return;
        }
        try {
            service->setFile(
                base::core::utility::SystemEnvironment::expandEnvironmentVariables(file));
        } catch (const base::exceptions::InvalidArgumentException& e) {
            qWarning().noquote() << QStringLiteral("setConfiguration: ")
                    + QString::fromUtf8(e.what());
        }
    }

private:
    InventoryService* service = new InventoryService; // owned through addProvidedService
};

} // namespace demo
} // namespace corvane

#include "InventoryPlugin.moc"
