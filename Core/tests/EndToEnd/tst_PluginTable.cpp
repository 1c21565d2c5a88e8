#include "TestFiles.h"

#include <Configuration/ConfigurationManager.h>
#include <Logging/LoggingManager.h>
#include <Plugins/PluginManager.h>
#include <Plugins/ServiceManager.h>
#include <StartUp/ManagerRegistry.h>

#include <QtTest>
#include <QtWidgets>

using namespace corvane::base;

// Starts the demo's inventory window with its real plug-ins, copied into a temporary folder
// together with a test plug-in of another task, and checks its table of loaded plug-ins.
class tst_PluginTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rows_data();
    void rows();
    void startingATaskUpdatesTheStates();
    void nothingIsCutOff();
    void doubleClickShowsTheDescription();

private:
    QTableWidget* table() const;
    QStringList rowOf(const QString& name) const;

    QTemporaryDir folder;
    business::PluginManager* manager = business::PluginManager::instance();
};

void tst_PluginTable::initTestCase()
{
    QVERIFY(folder.isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file :
         {"libInventory.so", "libWindow.so", "libHeartbeat.so", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), folder.filePath(file)), qPrintable(file));
    }
    QVERIFY(QFile::copy(QStringLiteral(PRINT_ONLY_PLUGIN), folder.filePath("libPrintOnly.so")));
    writeFile(folder.filePath("app.xml"),
              "<config><plugins>"
              "<plugin><library>Inventory</library>"
              "<configuration><file>inventory.csv</file></configuration></plugin>"
              "<plugin><library>Window</library></plugin>"
              "<plugin><library>PrintOnly</library></plugin>"
              "<plugin><library>Heartbeat</library>"
              "<configuration><intervalMs>100</intervalMs></configuration></plugin>"
              "</plugins></config>");

    // Started as an application's start does it, from the application's folder.
    auto* registry = business::ManagerRegistry::instance();
    registry->registerManager(*business::LoggingManager::instance());
    registry->registerManager(*business::ServiceManager::instance());
    registry->registerManager(*manager);
    QDomElement root;
    QCOMPARE(business::ConfigurationManager::getRootElement(folder.filePath("app.xml"), root),
             QString());
    entities::ApplicationInformation information;
    QList<entities::PluginConfiguration> plugins;
    business::ConfigurationManager::readConfig(root, information, plugins);
    QVERIFY(QDir::setCurrent(folder.path()));
    manager->setPluginFolder(folder.path());
    manager->setPluginConfigurations(plugins);
    manager->loadPlugins();
    manager->orderPlugins();
    manager->initPlugins();
    QVERIFY(table() != nullptr);
    QVERIFY(QTest::qWaitForWindowExposed(table()->window()));
}

void tst_PluginTable::cleanupTestCase()
{
    manager->unloadPlugins();
    const QWidgetList windows = QApplication::topLevelWidgets();
    QVERIFY(
        std::none_of(windows.begin(), windows.end(), [](QWidget* w) { return w->isVisible(); }));
}

QTableWidget* tst_PluginTable::table() const
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() == "Corvane demo: inventory") {
            return window->findChild<QTableWidget*>("plugins");
        }
    }
    return nullptr;
}

// The texts of a plug-in's row, the times as "ms" when they are numbers.
QStringList tst_PluginTable::rowOf(const QString& name) const
{
    QTableWidget* plugins = table();
    for (int row = 0; row < plugins->rowCount(); ++row) {
        if (plugins->item(row, 0)->text() == name) {
            QStringList cells;
            for (int column = 0; column < plugins->columnCount(); ++column) {
                const QString text = plugins->item(row, column)->text();
                cells << (column >= 6 && QRegularExpression("^\\d+$").match(text).hasMatch()
                              ? QStringLiteral("ms")
                              : text);
            }
            return cells;
        }
    }
    return {};
}

void tst_PluginTable::rows_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("cells");

    // Start order: all in the first pass, in name order (the window's requirement is provided
    // earlier in that pass); PrintOnly offers only the task "Print", so it is not started.
    const QString inventory = "corvane::demo::InventoryService";
    QTest::newRow("heartbeat")
        << 0
        << QStringList {"HeartbeatPlugin", "0.12.0", "initialized", "Base", "", "", "ms", "ms"};
    QTest::newRow("inventory") << 1
                               << QStringList {"InventoryPlugin", "0.12.0", "initialized", "Base",
                                               inventory,         "",       "ms",          "ms"};
    QTest::newRow("print only") << 2 << QStringList {"PrintOnly", "0.12.0", "not initialized",
                                                     "Print",     "",       "",
                                                     "ms",        "ms"};
    QTest::newRow("window") << 3
                            << QStringList {"WindowPlugin", "0.12.0", "initialized", "Base", "",
                                            inventory,      "ms",     "ms"};
}

void tst_PluginTable::rows()
{
    QFETCH(int, row);
    QFETCH(QStringList, cells);
    QTableWidget* plugins = table();
    QCOMPARE(plugins->rowCount(), 4);
    QStringList headers;
    for (int column = 0; column < plugins->columnCount(); ++column) {
        headers << plugins->horizontalHeaderItem(column)->text();
    }
    QCOMPARE(headers,
             QStringList({"Plug-in", "Version", "State", "Tasks", "Provides", "Requires",
                          "Load (ms)", "Initialize (ms)"}));
    QCOMPARE(plugins->item(row, 0)->text(), cells.first());
    QCOMPARE(rowOf(cells.first()), cells);
}

void tst_PluginTable::startingATaskUpdatesTheStates()
{
    manager->initializePluginsForTasks({"Print"});
    QCOMPARE(rowOf("PrintOnly").at(2), QStringLiteral("initialized"));
    manager->deinitializePluginsForTasks({"Print"});
    QCOMPARE(rowOf("PrintOnly").at(2), QStringLiteral("not initialized"));
    QCOMPARE(rowOf("InventoryPlugin").at(2), QStringLiteral("initialized"));
}

// At the window's own size every column is as wide as its widest text and every row shows.
void tst_PluginTable::nothingIsCutOff()
{
    // The width a column's contents ask for (protected; reached through a using-declaration).
    struct View : QTableWidget
    {
        using QTableWidget::sizeHintForColumn;
    };
    int (QTableView::*contentWidth)(int) const = &View::sizeHintForColumn;
    QTableWidget* plugins = table();
    for (int column = 0; column < plugins->columnCount(); ++column) {
        const int needed = qMax((plugins->*contentWidth)(column),
                                plugins->horizontalHeader()->sectionSizeHint(column));
        QVERIFY2(plugins->columnWidth(column) >= needed,
                 qPrintable(plugins->horizontalHeaderItem(column)->text()));
    }
    QVERIFY(plugins->horizontalHeader()->length() <= plugins->viewport()->width());
    QVERIFY(plugins->verticalHeader()->length() <= plugins->viewport()->height());
    QVERIFY(!plugins->horizontalScrollBar()->isVisible());
    QVERIFY(!plugins->verticalScrollBar()->isVisible());
}

void tst_PluginTable::doubleClickShowsTheDescription()
{
    QTableWidget* plugins = table();
    const QRect cell = plugins->visualItemRect(plugins->item(1, 3));
    QTest::mouseClick(plugins->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(plugins->viewport(), Qt::LeftButton, {}, cell.center());
    QMessageBox* box = nullptr;
    QTRY_VERIFY((box = plugins->window()->findChild<QMessageBox*>()) != nullptr
                && box->isVisible());
    QCOMPARE(box->windowTitle(), QStringLiteral("InventoryPlugin 0.12.0"));
    QCOMPARE(box->text(), QStringLiteral("Reads the stock from a CSV file"));
    box->accept();
    QTRY_VERIFY(plugins->window()->findChild<QMessageBox*>() == nullptr);
}

QTEST_MAIN(tst_PluginTable)
#include "tst_PluginTable.moc"
