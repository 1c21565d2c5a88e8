// Uses the inventory when there is one (an optional requirement): lists the items that need
// reordering. Without an inventory plug-in it still starts and says so.

#include "Inventory/IInventory.h"

#include <Interfaces/IService.h>
#include <Plugins/ServiceCache.h>
#include <Utility/AbstractPlugin.h>
#include <Utility/XMLHelper.h>

#include <QDomElement>
#include <QTextStream>

namespace corvane {
namespace demo {

class AuditPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    AuditPlugin()
    {
        setDescription(QStringLiteral("Lists the items to reorder"));
        addOptionalRequiredService(QStringLiteral("corvane::demo::InventoryService"));
    }

    void setConfiguration(QDomElement& configuration) override
    {
        base::core::utility::XMLHelper::readIntFromXML(
            configuration, QStringLiteral("reorderBelow"), &reorderBelow);
    }

    void initialize() override
    {
        AbstractPlugin::initialize();
        QTextStream out(stdout);
        base::interfaces::IService* service = base::business::ServiceCache::getServiceByInterface(
            QStringLiteral("de.corvane.demo.IInventory/1.0"));
        auto* inventory = qobject_cast<IInventory*>(service);
        if (inventory == nullptr) {
            out << "Audit: no inventory available\n";
            return;
        }
        for (const InventoryItem& item : inventory->items()) {
            if (item.quantity < reorderBelow) {
                out << "Audit: reorder " << item.name << " (" << item.quantity << " left)\n";
            }
        }
        base::business::ServiceCache::removeServiceFromCache(service);
    }

private:
    int reorderBelow = 5;
};

} // namespace demo
} // namespace corvane

#include "AuditPlugin.moc"
