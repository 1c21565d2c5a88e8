// Shows the inventory in a window: a table of the items and the loaded plug-ins with their
// versions. CORVANE_DEMO_CLOSE_AFTER_MS closes the window by itself (for screenshots and tests).

#include "Inventory/IInventory.h"

#include <Interfaces/IPluginManager.h>
#include <Interfaces/IService.h>
#include <Plugins/ServiceCache.h>
#include <StartUp/ManagerRegistry.h>
#include <Utility/AbstractPlugin.h>

#include <QCoreApplication>
#include <QDebug>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <memory>

namespace corvane {
namespace demo {

class WindowPlugin : public base::core::utility::AbstractPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    WindowPlugin()
    {
        setDescription(QStringLiteral("Shows the inventory in a window"));
        addRequiredService(QStringLiteral("corvane::demo::InventoryService"));
    }

    void initialize() override
    {
        AbstractPlugin::initialize();
        window = std::make_unique<QWidget>();
        window->setWindowTitle(QStringLiteral("Corvane demo: inventory"));
        auto* layout = new QHBoxLayout(window.get());
        layout->addWidget(inventoryTable(), 3);
        auto* side = new QVBoxLayout;
        side->addWidget(new QLabel(QStringLiteral("Loaded plug-ins")));
        side->addWidget(pluginList());
        layout->addLayout(side, 1);
        window->resize(720, 360);
        window->show();
        qInfo("initialize: inventory window shown");

        const int closeAfter = qEnvironmentVariableIntValue("CORVANE_DEMO_CLOSE_AFTER_MS");
        if (closeAfter > 0) {
            QTimer::singleShot(closeAfter, window.get(), &QWidget::close);
        }
    }

    void deinitialize() override
    {
        window.reset();
        AbstractPlugin::deinitialize();
    }

private:
    QTableWidget* inventoryTable() const
    {
        base::interfaces::IService* service = base::business::ServiceCache::getServiceByInterface(
            QStringLiteral("de.corvane.demo.IInventory/1.0"));
        const QList<InventoryItem> items = qobject_cast<IInventory*>(service)->items();
        base::business::ServiceCache::removeServiceFromCache(service);

        auto* table = new QTableWidget(items.size(), 3);
        table->setHorizontalHeaderLabels(
            {QStringLiteral("Item"), QStringLiteral("Quantity"), QStringLiteral("Price")});
        for (int row = 0; row < items.size(); ++row) {
            table->setItem(row, 0, new QTableWidgetItem(items.at(row).name));
            table->setItem(row, 1, new QTableWidgetItem(QString::number(items.at(row).quantity)));
            table->setItem(row, 2,
                           new QTableWidgetItem(QString::number(items.at(row).price, 'f', 2)));
        }
        table->horizontalHeader()->setStretchLastSection(true);
        return table;
    }

    static QListWidget* pluginList()
    {
        auto* list = new QListWidget;
        auto* plugins = base::business::ManagerRegistry::instance()->getPluginManager();
        QStringList names;
        plugins->getAvailablePlugins(names);
        for (const QString& name : qAsConst(names)) {
            QString description;
            QString version;
            plugins->getPluginInformation(name, description, version);
            list->addItem(QStringLiteral("%1 %2 - %3").arg(name, version, description));
        }
        return list;
    }

    std::unique_ptr<QWidget> window;
};

} // namespace demo
} // namespace corvane

#include "WindowPlugin.moc"
