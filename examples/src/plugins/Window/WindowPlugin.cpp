// Shows the inventory in a window: a table of the items and, below it, a table of the loaded
// plug-ins (version, state, tasks, services, load and initialize times; a double-click shows a
// plug-in's description). CORVANE_DEMO_CLOSE_AFTER_MS closes the window by itself (for
// screenshots and tests).

#include "Inventory/IInventory.h"

#include <Interfaces/IPluginManager.h>
#include <Interfaces/IService.h>
#include <Plugins/PluginManager.h>
#include <Plugins/ServiceCache.h>
#include <Plugins/StartUpTrace.h>
#include <StartUp/ApplicationStartupHandler.h>
#include <StartUp/ManagerRegistry.h>
#include <Utility/AbstractPlugin.h>

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
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
        auto* layout = new QVBoxLayout(window.get());
        layout->addWidget(inventoryTable(), 1);
        layout->addWidget(new QLabel(QStringLiteral("Loaded plug-ins")));
        layout->addWidget(pluginTable());
        // Wide enough for every column of the plug-in table, whatever the font.
        window->resize(qMax(900, layout->sizeHint().width()), 560);
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

    // One row per loaded plug-in, in start order; filled again whenever plug-ins are started
    // or stopped.
    QTableWidget* pluginTable()
    {
        plugins = new QTableWidget(0, 8);
        plugins->setObjectName(QStringLiteral("plugins"));
        plugins->setHorizontalHeaderLabels(
            {QStringLiteral("Plug-in"), QStringLiteral("Version"), QStringLiteral("State"),
             QStringLiteral("Tasks"), QStringLiteral("Provides"), QStringLiteral("Requires"),
             QStringLiteral("Load (ms)"), QStringLiteral("Initialize (ms)")});
        plugins->verticalHeader()->hide();
        plugins->setEditTriggers(QAbstractItemView::NoEditTriggers);
        plugins->setSelectionBehavior(QAbstractItemView::SelectRows);
        // As high as its rows, so that none is hidden behind a scroll bar.
        plugins->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
        plugins->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        connect(plugins, &QTableWidget::cellDoubleClicked, window.get(),
                [this](int row) { showDescription(row); });

        auto* manager = base::business::ManagerRegistry::instance()->getPluginManager();
        using Manager = base::interfaces::IPluginManager;
        for (auto signal :
             {&Manager::signalPluginInitializedForBase, &Manager::signalPluginInitializedForTasks,
              &Manager::signalPluginDeinitializedForTasks}) {
            connect(manager, signal, plugins, [this] { fillPluginTable(); });
        }
        fillPluginTable();
        return plugins;
    }

    static base::business::PluginManager* pluginManager()
    {
        return qobject_cast<base::business::PluginManager*>(
            base::business::ManagerRegistry::instance()->getPluginManager());
    }

    void fillPluginTable()
    {
        base::business::PluginManager* manager = pluginManager();
        QStringList names;
        manager->getAvailablePlugins(names);
        plugins->setRowCount(names.size());
        for (int row = 0; row < names.size(); ++row) {
            const auto plugin = manager->getPluginDetails(names.at(row));
            QStringList required = plugin.requiredServices;
            for (const QString& service : plugin.optionalRequiredServices) {
                required << service + QStringLiteral(" (optional)");
            }
            const QStringList cells {plugin.name,
                                     plugin.version,
                                     plugin.initialized ? QStringLiteral("initialized")
                                                        : QStringLiteral("not initialized"),
                                     plugin.tasks.join(QStringLiteral(", ")),
                                     plugin.providedServices.join(QStringLiteral(", ")),
                                     required.join(QStringLiteral(", ")),
                                     milliseconds(plugin.name, QStringLiteral("load")),
                                     milliseconds(plugin.name, QStringLiteral("initialize"))};
            for (int column = 0; column < cells.size(); ++column) {
                auto* item = new QTableWidgetItem(cells.at(column));
                if (column >= 6) {
                    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                }
                plugins->setItem(row, column, item);
            }
        }
        plugins->resizeColumnsToContents();
        plugins->resizeRowsToContents();
    }

    // From the start-up trace, with one decimal; empty for a phase that did not run.
    static QString milliseconds(const QString& plugin, const QString& phase)
    {
        const double value = base::business::StartUpTrace::instance()->milliseconds(plugin, phase);
        return value < 0 ? QString() : QString::number(value, 'f', 1);
    }

    void showDescription(int row)
    {
        const auto plugin = pluginManager()->getPluginDetails(plugins->item(row, 0)->text());
        auto* box = new QMessageBox(QMessageBox::Information, plugin.name + ' ' + plugin.version,
                                    plugin.description, QMessageBox::Ok, window.get());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
    }

    std::unique_ptr<QWidget> window;
    QTableWidget* table = nullptr; // owned by the window
    QTableWidget* plugins = nullptr; // owned by the window
};

} // namespace demo
} // namespace corvane

#include "WindowPlugin.moc"
