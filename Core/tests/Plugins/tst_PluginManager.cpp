#include "FakeManagers.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/PluginManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QDomDocument>
#include <QtTest>

#include <memory>

using corvane::base::business::ManagerRegistry;
using corvane::base::business::PluginManager;
using corvane::base::entities::PluginConfiguration;
using corvane::base::exceptions::PluginManagerException;

namespace {

QStringList messages;

void captureMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    static const char* const names[] = {"debug", "warning", "critical", "fatal", "info"};
    messages << QStringLiteral("%1 %2").arg(names[type], message);
}

// Every run gets a manager of its own; the singleton is for applications.
class FreshPluginManager : public PluginManager
{
};

// Hands out plug-in entries written as "Library" or "Library:<configuration children>".
class ConfigurationManager : public fakes::ConfigurationManager
{
public:
    void getPluginConfiguration(QList<PluginConfiguration>& configurations) override
    {
        configurations.clear();
        for (const QString& entry : qAsConst(entries)) {
            QDomDocument document;
            document.setContent(
                QStringLiteral("<configuration>%1</configuration>").arg(entry.section(':', 1)));
            documents << document;
            configurations << PluginConfiguration(entry.section(':', 0, 0) + ".dll",
                                                  document.documentElement());
        }
    }
    QStringList entries;
    QList<QDomDocument> documents;
};

QString reasonOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const PluginManagerException& e) {
        return e.getReason();
    }
    return QStringLiteral("<no exception>");
}

} // namespace

class tst_PluginManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void loadsAndAnnouncesAPlugin();
    void refusedLibraries_data();
    void refusedLibraries();
    void startsInDependencyOrderAndStopsInReverse();
    void pluginsRequiringEachOtherAreNeverOrdered();
    void optionalRequirementDoesNotBlock();
    void closeCheckAsksEveryPlugin();
    void tasksStartAndStopTheirPlugins();
    void subLists_data();
    void subLists();
    void failingInitializeIsReported();

private:
    std::unique_ptr<FreshPluginManager> manager;
    fakes::LoggingManager logging;
    ConfigurationManager configuration;
};

void tst_PluginManager::initTestCase()
{
    ManagerRegistry::instance()->registerManager(logging);
    ManagerRegistry::instance()->registerManager(configuration);
}

void tst_PluginManager::cleanupTestCase()
{
    ManagerRegistry::instance()->unregisterManager(configuration);
    ManagerRegistry::instance()->unregisterManager(logging);
}

void tst_PluginManager::init()
{
    messages.clear();
    qInstallMessageHandler(captureMessage);
    configuration.entries.clear();
    manager = std::make_unique<FreshPluginManager>();
}

// Unloading deletes the plug-in objects, so that the next test loads them fresh.
void tst_PluginManager::cleanup()
{
    manager->deinitialize();
    manager.reset();
    qInstallMessageHandler(nullptr);
}

void tst_PluginManager::loadsAndAnnouncesAPlugin()
{
    QSignalSpy loaded(manager.get(), &PluginManager::signalPluginLoaded);
    manager->loadPlugin(QStringLiteral("PluginB.dll"));
    manager->loadPlugin(QStringLiteral("libPluginC.so"));
    QCOMPARE(loaded.count(), 2);
    QCOMPARE(loaded.at(0).at(0).toString(), QStringLiteral("PluginB"));
    QVERIFY(manager->isLoaded(QStringLiteral("PluginC")));
    QVERIFY(!manager->isInitialized(QStringLiteral("PluginC")));
    QStringList names;
    manager->getAvailablePlugins(names);
    QCOMPARE(names, QStringList({"PluginB", "PluginC"}));

    QString description;
    QString version;
    manager->getPluginInformation(QStringLiteral("PluginB"), description, version);
    QCOMPARE(version, QStringLiteral("0.12.0"));
    QCOMPARE(reasonOf([&] { manager->getPluginInformation("Nobody", description, version); }),
             QStringLiteral("Plugin not loadedNobody"));
    QVERIFY(messages.contains("info loadPlugin: Plugin loaded: PluginB (0.12.0)"));
}

void tst_PluginManager::refusedLibraries_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "Missing.dll"
                             << "Failed to load plugin (Missing.dll). ";
    QTest::newRow("no Qt plug-in") << "PlainLibrary.dll"
                                   << "Failed to load plugin (PlainLibrary.dll). ";
    QTest::newRow("no IPlugin") << "NotAPlugin.dll"
                                << "Plugin not recognized: NotAPlugin.dll";
    QTest::newRow("loaded twice") << "PluginB.dll"
                                  << "Plugin already loaded: PluginB.dll";
}

void tst_PluginManager::refusedLibraries()
{
    QFETCH(QString, library);
    QFETCH(QString, reason);
    if (library == QLatin1String("PluginB.dll")) {
        manager->loadPlugin(library);
    }
    const QString actual = reasonOf([&] { manager->loadPlugin(library); });
    QVERIFY2(actual.startsWith(reason), qPrintable(actual));
    if (reason.endsWith(QLatin1String(". "))) {
        // QPluginLoader's own explanation follows; the log line names the file that was tried.
        QVERIFY2(actual.size() > reason.size(), qPrintable(actual));
        const QString tried = QDir(QCoreApplication::applicationDirPath())
                                  .filePath("lib" + library.section('.', 0, 0) + ".so");
        QCOMPARE(messages.filter("critical").last(),
                 "critical loadPlugin: Failed to load plugin: " + library + " from " + tried);
    }
    QVERIFY(!manager->isLoaded(library.section('.', 0, 0))
            || library == QLatin1String("PluginB.dll"));
}

void tst_PluginManager::startsInDependencyOrderAndStopsInReverse()
{
    QSignalSpy base(manager.get(), &PluginManager::signalPluginInitializedForBase);
    configuration.entries = QStringList {"PluginA", "PluginB", "PluginC"};
    manager->initialize();

    QStringList names;
    manager->getAvailablePlugins(names);
    QCOMPARE(names, QStringList({"PluginB", "PluginC", "PluginA"}));
    QCOMPARE(base.count(), 1);
    QCOMPARE(messages.filter("test:"),
             QStringList({"info test: PluginB initialized", "info test: PluginC initialized",
                          "info test: PluginA initialized"}));
    QCOMPARE(messages
                 .filter(QRegularExpression("^debug init: Plugin \\w+ loaded in \\d+ ms, "
                                            "initialized in \\d+ ms$"))
                 .size(),
             3);

    messages.clear();
    manager->deinitialize();
    QCOMPARE(messages.filter("test:"),
             QStringList({"info test: PluginA deinitialized", "info test: PluginC deinitialized",
                          "info test: PluginB deinitialized"}));
    QVERIFY(!manager->isLoaded(QStringLiteral("PluginA")));
}

void tst_PluginManager::pluginsRequiringEachOtherAreNeverOrdered()
{
    for (const char* library : {"MutualY.dll", "PluginC.dll", "MutualX.dll"}) {
        manager->loadPlugin(QString::fromLatin1(library));
    }
    QCOMPARE(reasonOf([&] { manager->orderPlugins(); }),
             QStringLiteral("Failed to order the following plugins: MutualX, MutualY"));
    QCOMPARE(messages.filter("critical"),
             QStringList(
                 {"critical orderPlugins: Failed to order the following plugins:MutualX, MutualY",
                  "critical orderPlugins: MutualX is missing: SY (provided by MutualY)",
                  "critical orderPlugins: MutualY is missing: SX (provided by MutualX)",
                  "critical orderPlugins: cycle: MutualX -> SY -> MutualY -> SX -> MutualX"}));
}

void tst_PluginManager::optionalRequirementDoesNotBlock()
{
    manager->loadPlugin(QStringLiteral("Optional.dll"));
    manager->orderPlugins();
    manager->initPlugins();
    QVERIFY(manager->isInitialized(QStringLiteral("Optional")));
    QVERIFY(messages.contains(
        "debug orderPlugins: OptionalRequiredService not available:Nobody for plugin Optional"));
}

void tst_PluginManager::closeCheckAsksEveryPlugin()
{
    configuration.entries
        = QStringList {"PluginA", "PluginB:<canClose>false</canClose>", "PluginC"};
    manager->initialize();
    messages.clear();
    QVERIFY(!manager->checkIfApplicationCanClose());
    QCOMPARE(messages.filter("test:"),
             QStringList({"info test: PluginB asked", "info test: PluginC asked",
                          "info test: PluginA asked"}));
    QVERIFY(messages.contains("debug checkIfApplicationCanClose: Plugin CANNOT close: PluginB"));
}

void tst_PluginManager::tasksStartAndStopTheirPlugins()
{
    configuration.entries = QStringList {"Printer", "PrintOnly", "PluginC"};
    manager->initialize();
    QVERIFY(manager->isInitialized(QStringLiteral("Printer")));
    QVERIFY(!manager->isInitialized(QStringLiteral("PrintOnly")));

    QSignalSpy started(manager.get(), &PluginManager::signalPluginInitializedForTasks);
    manager->initializePluginsForTasks({QStringLiteral("Print"), QStringLiteral("Scan")});
    QCOMPARE(started.count(), 1);
    QVERIFY(manager->isInitialized(QStringLiteral("PrintOnly")));
    QVERIFY(messages.contains("critical initializePluginsForTasks: Loading unavailable task Scan"));

    QSignalSpy stopped(manager.get(), &PluginManager::signalPluginDeinitializedForTasks);
    manager->deinitializePluginsForTasks({QStringLiteral("Print")});
    QCOMPARE(stopped.count(), 1);
    QVERIFY(!manager->isInitialized(QStringLiteral("PrintOnly")));
    QVERIFY(manager->isInitialized(QStringLiteral("Printer")));
    QVERIFY(messages.contains("debug deinitializePluginsForTasks: Marking plugin Printer NOT for "
                              "deinit because of task: Base"));

    QCOMPARE(reasonOf([&] { manager->deinitializePlugin(QStringLiteral("PrintOnly")); }),
             QStringLiteral("Plugin already deinitialized: PrintOnly"));
    QCOMPARE(reasonOf([&] { manager->initializePlugin(QStringLiteral("Printer")); }),
             QStringLiteral("Plugin already initialized: Printer"));
    manager->initializePlugin(QStringLiteral("PrintOnly"));
    QVERIFY(manager->isInitialized(QStringLiteral("PrintOnly")));
}

void tst_PluginManager::subLists_data()
{
    QTest::addColumn<QStringList>("b");
    QTest::addColumn<bool>("sub");
    QTest::addColumn<bool>("partial");
    QTest::newRow("empty") << QStringList() << true << false;
    QTest::newRow("all in a") << QStringList {"x", "y"} << true << true;
    QTest::newRow("some in a") << QStringList {"x", "z"} << false << true;
    QTest::newRow("none in a") << QStringList {"z"} << false << false;
    QTest::newRow("case-sensitive") << QStringList {"X"} << false << false;
}

void tst_PluginManager::subLists()
{
    QFETCH(QStringList, b);
    QFETCH(bool, sub);
    QFETCH(bool, partial);
    const QStringList a {"x", "y"};
    QCOMPARE(manager->isSubListOf(a, b), sub);
    QCOMPARE(manager->isPartialSubListOf(a, b), partial);
}

// Last: the failed start also asks the application to end with 1 once an event loop runs.
void tst_PluginManager::failingInitializeIsReported()
{
    configuration.entries
        = QStringList {"PluginB:<failInitialize>true</failInitialize>", "PluginC"};
    manager->initialize();
    QVERIFY(!manager->isInitialized(QStringLiteral("PluginB")));
    QVERIFY(!manager->isInitialized(QStringLiteral("PluginC")));
    const QStringList errors = messages.filter("Error during initialize of plugin.");
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors.first().contains("Failed to initialize plugin (PluginB): "
                                     "TestPlugin::initialize() refuses to start"),
             qPrintable(errors.first()));
}

QTEST_MAIN(tst_PluginManager)
#include "tst_PluginManager.moc"
