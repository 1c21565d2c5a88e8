#include "Processes.h"

#include <Logging/LoggingManager.h>
#include <Plugins/PluginManager.h>
#include <Plugins/ServiceManager.h>
#include <StartUp/ManagerRegistry.h>

#include <QtWidgets>

using namespace corvane::base;

// The demo's inventory window, started in this process with the demo's plug-ins and a test
// plug-in of another task, copied into a temporary folder: its table of loaded plug-ins.
class tst_PluginTable : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    business::PluginManager* manager = business::PluginManager::instance();
    QPointer<QTableWidget> table;

    // The header, then each row, its cells joined by '|'; times as "ms" when they are numbers of
    // milliseconds with one decimal, "-" when empty.
    QStringList rows() const
    {
        QStringList rows;
        for (int row = -1; row < table->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < table->columnCount(); ++column) {
                const QString text = row < 0 ? table->horizontalHeaderItem(column)->text()
                                             : table->item(row, column)->text();
                const bool time = QRegularExpression("^\\d+\\.\\d$").match(text).hasMatch();
                cells << (column < 6 ? text : time ? "ms" : text.isEmpty() ? "-" : text);
            }
            rows << cells.join('|');
        }
        return rows;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(copyInto(folder.path(), DEMO_FOLDER,
                         {"libInventory.so", "libWindow.so", "libHeartbeat.so", "inventory.csv",
                          PRINT_ONLY_PLUGIN}));
        QDomDocument document; // each plug-in reads its own of these
        document.setContent(
            QByteArray("<c><file>inventory.csv</file><intervalMs>100</intervalMs></c>"));
        const QDomElement configuration = document.documentElement();
        // Started as an application's start does it, from the application's folder.
        auto* registry = business::ManagerRegistry::instance();
        registry->registerManager(*business::LoggingManager::instance());
        registry->registerManager(*business::ServiceManager::instance());
        registry->registerManager(*manager);
        QVERIFY(QDir::setCurrent(folder.path()));
        manager->setPluginFolder(folder.path());
        manager->setPluginConfigurations({{"Inventory", configuration},
                                          {"Window", configuration},
                                          {"PrintOnly", configuration},
                                          {"Heartbeat", configuration}});
        manager->loadPlugins();
        manager->orderPlugins();
        manager->initPlugins();
        for (QWidget* window : QApplication::topLevelWidgets()) {
            table = table ? table.data() : window->findChild<QTableWidget*>("plugins");
        }
        QVERIFY(table && QTest::qWaitForWindowExposed(table->window()));
    }
    void cleanupTestCase()
    {
        const QPointer<QWidget> window = table->window();
        manager->unloadPlugins();
        QVERIFY(!window || !window->isVisible());
    }

    // In start order: all in the first pass, in name order (the window's requirement is provided
    // earlier in that pass); PrintOnly offers only the task "Print": started with that task.
    void rowsFollowTheTasks()
    {
        const QString inventory = "corvane::demo::InventoryService";
        const auto expected = [&](const QString& printOnly, const QString& initializeTime) {
            return QStringList {
                "Plug-in|Version|State|Tasks|Provides|Requires|Load (ms)|Initialize (ms)",
                "HeartbeatPlugin|0.12.0|initialized|Base|||ms|ms",
                "InventoryPlugin|0.12.0|initialized|Base|" + inventory + "||ms|ms",
                "PrintOnly|0.12.0|" + printOnly + "|Print|||ms|" + initializeTime,
                "WindowPlugin|0.12.0|initialized|Base||" + inventory + "|ms|ms"};
        };
        QCOMPARE(rows(), expected("not initialized", "-"));
        manager->initializePluginsForTasks({"Print"});
        QCOMPARE(rows(), expected("initialized", "ms"));
        manager->deinitializePluginsForTasks({"Print"}); // its last initialize stays shown
        QCOMPARE(rows(), expected("not initialized", "ms"));
        // At the window's own size nothing is cut off.
        QVERIFY(!table->horizontalScrollBar()->isVisible()
                && !table->verticalScrollBar()->isVisible());
    }
};

QTEST_MAIN(tst_PluginTable)
#include "tst_PluginTable.moc"
