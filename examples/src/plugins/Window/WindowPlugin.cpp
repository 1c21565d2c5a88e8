// Shows the inventory in a window: a table of the items and the loaded plug-ins with their
// versions. CORVANE_DEMO_CLOSE_AFTER_MS closes the window by itself (for screenshots and tests).

#include "Inventory/IInventory.h"

#include <Interfaces/IPluginManager.h>
#include <Interfaces/IService.h>
#include <Plugins/ServiceCache.h>
#include <StartUp/ApplicationStartupHandler.h>
#include <StartUp/ManagerRegistry.h>
#include <Utility/AbstractPlugin.h>

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
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
        layout->addLayout(side, 2);
        window->resize(900, 360);
        window->show();
        qInfo("initialize: inventory window shown");

        // A second start of the application hands its request to this window.
        auto* handler = base::business::ApplicationStartupHandler::instance();
        connect(handler, &base::business::ApplicationStartupHandler::raiseRequest, window.get(),
                [this] {
                    window->raise();
                    window->activateWindow();
                });
        connect(handler, &base::business::ApplicationStartupHandler::loadRequest, window.get(),
                [this](const QString& file) { loadFile(file); });

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
    // Shows the items of another inventory file ("item,quantity,price,..." after a header).
    void loadFile(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            qWarning().noquote() << QStringLiteral("loadFile: cannot read ") + path;
            return;
        }
        const QStringList lines
            = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts).mid(1);
        table->setRowCount(lines.size());
        for (int row = 0; row < lines.size(); ++row) {
            const QStringList fields = lines.at(row).split(',');
            for (int column = 0; column < 3; ++column) {
                table->setItem(row, column, new QTableWidgetItem(fields.value(column)));
            }
        }
        window->setWindowTitle(QStringLiteral("Corvane demo: ") + path);
        window->raise();
        qInfo().noquote()
            << QStringLiteral("loadFile: %1 items from %2").arg(lines.size()).arg(path);
    }

    QTableWidget* inventoryTable()
    {
        base::interfaces::IService* service = base::business::ServiceCache::getServiceByInterface(
            QStringLiteral("de.corvane.demo.IInventory/1.0"));
        const QList<InventoryItem> items = qobject_cast<IInventory*>(service)->items();
        base::business::ServiceCache::removeServiceFromCache(service);

        table = new QTableWidget(items.size(), 3);
        table->setHorizontalHeaderLabels(
            {QStringLiteral("Item"), QStringLiteral("Quantity"), QStringLiteral("Price")});
        for (int row = 0; row < items.size(); ++row) {
            table->setItem(row, 0, new QTableWidgetItem(items.at(row).name));
            table->setItem(row, 1, new QTableWidgetItem(QString::number(items.at(row).quantity)));
            table->setItem(row, 2,
                           new QTableWidgetItem(QString::number(items.at(row).price, 'f', 2)));
        }
        table->resizeColumnsToContents();
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
    QTableWidget* table = nullptr; // owned by the window
};

} // namespace demo
} // namespace corvane

#include "WindowPlugin.moc"
