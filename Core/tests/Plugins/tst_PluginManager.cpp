#include "FakeManagers.h"
#include "HelperProcess.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/PluginManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QDomDocument>
#include <QtTest>

#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

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

using Step = std::function<void(PluginManager&)>;

Step loading(const QStringList& libraries, bool thenOrder = false)
{
    return [=](PluginManager& manager) {
        for (const QString& library : libraries) {
            manager.loadPlugin(library + ".dll");
        }
        if (thenOrder) {
            manager.orderPlugins();
        }
    };
}

// The lines of the manager's own operations that name a plug-in, a file or a task, told apart
// by their fixed texts; other diagnostics (timings, explanations, the plug-ins' own) pass by.
QStringList namingLines(const QStringList& lines)
{
    static const QRegularExpression naming(
        "^\\w+ (loadPlugin: (\"?[^ ]+\\.dll\"?$|Plugin (loaded|already loaded|not recognized):)"
        "|orderPlugins: (OptionalRequiredService not available:|Plugin (NOT )?ordered:"
        "|Failed to order the following plugins:)"
        "|initPlugins?: Plugin |deinitPlugin: Plugin "
        "|(de)?initializePlugin: Plugin (init|deinit|already|not)"
        "|(de)?initializePluginsForTasks: (TaskList:|Loading unavailable|Unloading unavailable"
        "|Plugin init|Marking plugin)"
        "|checkIfApplicationCanClose: (Ask Plugin:|Plugin (CANNOT|can) close:)"
        "|unloadPlugin: Plugin not loaded:|getPluginInformation: Plugin )");
    return lines.filter(naming);
}

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

Q_DECLARE_METATYPE(Step)

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
    void loadsAgainAfterUnload();
    void logLines_data();
    void logLines();
    void startsInDependencyOrderAndStopsInReverse();
    void pluginsRequiringEachOtherAreNeverOrdered();
    void optionalRequirementDoesNotBlock();
    void closeCheckAsksEveryPlugin();
    void tasksStartAndStopTheirPlugins();
    void subLists_data();
    void subLists();
    void failedStartLeavesNoServiceRegistered();
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
    try {
        manager->deinitialize();
    } catch (const PluginManagerException& e) {
        qInstallMessageHandler(nullptr);
        manager.reset();
        QFAIL(e.what());
    }
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
}

void tst_PluginManager::refusedLibraries_data()
{
    QTest::addColumn<QString>("loadedBefore");
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QString>("logged"); // the critical line before the throw
    QTest::newRow("missing") << ""
                             << "Missing.dll"
                             << "Failed to load plugin (Missing.dll). "
                             << "";
    QTest::newRow("no Qt plug-in") << ""
                                   << "PlainLibrary.dll"
                                   << "Failed to load plugin (PlainLibrary.dll). "
                                   << "";
    QTest::newRow("no IPlugin") << ""
                                << "NotAPlugin.dll"
                                << "Plugin not recognized: NotAPlugin.dll"
                                << "loadPlugin: Plugin not recognized: \"NotAPlugin.dll\"";
    QTest::newRow("loaded twice") << "PluginB.dll"
                                  << "PluginB.dll"
                                  << "Plugin already loaded: PluginB.dll"
                                  << "loadPlugin: Plugin already loaded: \"PluginB.dll\"";
    // PluginBTwin is another library whose plug-in calls itself PluginB.
    QTest::newRow("plug-in name loaded twice")
        << "PluginB.dll"
        << "PluginBTwin.dll"
        << "Plugin name already loaded: PluginB (PluginBTwin.dll)"
        << "loadPlugin: Plugin name already loaded: \"PluginB\" (\"PluginBTwin.dll\")";
}

void tst_PluginManager::refusedLibraries()
{
    QFETCH(QString, loadedBefore);
    QFETCH(QString, library);
    QFETCH(QString, reason);
    QFETCH(QString, logged);
    if (!loadedBefore.isEmpty()) {
        manager->loadPlugin(loadedBefore);
    }
    const QString actual = reasonOf([&] { manager->loadPlugin(library); });
    if (logged.isEmpty()) {
        // QPluginLoader's own explanation follows; the log line names the file that was tried.
        QVERIFY2(actual.startsWith(reason) && actual.size() > reason.size(), qPrintable(actual));
        const QString tried = QDir(QCoreApplication::applicationDirPath())
                                  .filePath("lib" + library.section('.', 0, 0) + ".so");
        logged = "loadPlugin: Failed to load plugin: \"" + library + "\" from \"" + tried + "\"";
    } else {
        QCOMPARE(actual, reason);
    }
    QCOMPARE(messages.filter("critical").last(), "critical " + logged);
    QStringList names;
    manager->getAvailablePlugins(names);
    QCOMPARE(names, loadedBefore.isEmpty() ? QStringList() : QStringList {"PluginB"});
#ifdef __SANITIZE_ADDRESS__
    QVERIFY2(__lsan_do_recoverable_leak_check() == 0, "a refused library leaked memory");
#endif
}

void tst_PluginManager::loadsAgainAfterUnload()
{
    const QString library = QStringLiteral("PluginB.dll");
    manager->loadPlugin(library);
    manager->unloadPlugin(QStringLiteral("PluginB"));
    QVERIFY(!manager->isLoaded(QStringLiteral("PluginB")));
    QCOMPARE(reasonOf([&] { manager->loadPlugin(library); }), QStringLiteral("<no exception>"));
    QVERIFY(manager->isLoaded(QStringLiteral("PluginB")));
    QCOMPARE(reasonOf([&] { manager->loadPlugin(library); }),
             QStringLiteral("Plugin already loaded: PluginB.dll"));
}

// Each operation's lines, whole and in order, with their level; "*" stands where the level
// is free. Names, files and tasks stand in double quotes, one blank between items.
void tst_PluginManager::logLines_data()
{
    QTest::addColumn<Step>("arrange");
    QTest::addColumn<Step>("act");
    QTest::addColumn<QStringList>("lines");
    const Step nothing = [](PluginManager&) {
    };
    const auto starting = [this](const QStringList& entries) {
        return Step([this, entries](PluginManager& manager) {
            configuration.entries = entries;
            manager.initialize();
        });
    };
    const Step order = [](PluginManager& m) {
        m.orderPlugins();
    };
    const Step printers = starting({"PluginC", "PrintOnly", "Printer"});
    const Step closing = starting({"PluginA", "PluginB:<canClose>false</canClose>", "PluginC"});

    QTest::newRow("load") << nothing << loading({"PluginB"})
                          << QStringList {
                                 R"(debug loadPlugin: "PluginB.dll")",
                                 R"(info loadPlugin: Plugin loaded: "PluginB" ("0.12.0"))"};
    QTest::newRow("load twice")
        << loading({"PluginB"}) << loading({"PluginB"})
        << QStringList {R"(debug loadPlugin: "PluginB.dll")",
                        R"(critical loadPlugin: Plugin already loaded: "PluginB.dll")"};
    QTest::newRow("load no plug-in")
        << nothing << loading({"NotAPlugin"})
        << QStringList {R"(debug loadPlugin: "NotAPlugin.dll")",
                        R"(critical loadPlugin: Plugin not recognized: "NotAPlugin.dll")"};
    QTest::newRow("order")
        << loading({"PluginA", "PluginB", "PluginC", "Optional"}) << order
        << QStringList {
               R"(debug orderPlugins: OptionalRequiredService not available: "Nobody" for plugin "Optional")",
               R"(info orderPlugins: Plugin ordered: "Optional")",
               R"(info orderPlugins: Plugin ordered: "PluginB")",
               R"(info orderPlugins: Plugin ordered: "PluginC")",
               R"(info orderPlugins: Plugin ordered: "PluginA")"};
    QTest::newRow("order, a second provider never ordered")
        << loading({"PluginA", "PluginB", "PluginD"}) << order
        << QStringList {
               R"(info orderPlugins: Plugin ordered: "PluginB")",
               R"(debug orderPlugins: Plugin NOT ordered: "PluginA")",
               R"(critical orderPlugins: Failed to order the following plugins: "PluginA, PluginD")"};
    QTest::newRow("order, mutual requirement")
        << loading({"MutualY", "PluginC", "MutualX"}) << order
        << QStringList {
               R"(info orderPlugins: Plugin ordered: "PluginC")",
               R"(critical orderPlugins: Failed to order the following plugins: "MutualX, MutualY")"};
    QTest::newRow("start the base task")
        << loading({"Printer", "PrintOnly", "PluginC"}, true)
        << Step([](PluginManager& m) { m.initPlugins(); })
        << QStringList {R"(info initPlugins: Plugin init started: "PluginC")",
                        R"(info initPlugin: Plugin initialized: "PluginC")",
                        R"(info initPlugins: Plugin init NOT started: "PrintOnly")",
                        R"(info initPlugins: Plugin init started: "Printer")",
                        R"(info initPlugin: Plugin initialized: "Printer")"};
    QTest::newRow("start one") << printers
                               << Step([](PluginManager& m) { m.initializePlugin("PrintOnly"); })
                               << QStringList {
                                      R"(* initializePlugin: Plugin init started: "PrintOnly")",
                                      R"(info initPlugin: Plugin initialized: "PrintOnly")"};
    QTest::newRow("start one already started")
        << printers << Step([](PluginManager& m) { m.initializePlugin("PluginC"); })
        << QStringList {R"(* initializePlugin: Plugin init started: "PluginC")",
                        R"(critical initializePlugin: Plugin already initialized: "PluginC")"};
    QTest::newRow("start one not loaded")
        << printers << Step([](PluginManager& m) { m.initializePlugin("Nobody"); })
        << QStringList {R"(* initializePlugin: Plugin init started: "Nobody")",
                        R"(critical initializePlugin: Plugin not initialized: "Nobody")"};
    QTest::newRow("stop one") << printers
                              << Step([](PluginManager& m) { m.deinitializePlugin("PluginC"); })
                              << QStringList {
                                     R"(* deinitializePlugin: Plugin deinit started: "PluginC")",
                                     R"(info deinitPlugin: Plugin "PluginC" deinitialized.)"};
    QTest::newRow("stop one not started")
        << printers << Step([](PluginManager& m) { m.deinitializePlugin("PrintOnly"); })
        << QStringList {
               R"(* deinitializePlugin: Plugin deinit started: "PrintOnly")",
               R"(critical deinitializePlugin: Plugin already deinitialized: "PrintOnly")"};
    QTest::newRow("start tasks")
        << printers << Step([](PluginManager& m) {
               m.initializePluginsForTasks({"Print", "Other"});
           })
        << QStringList {R"(debug initializePluginsForTasks: TaskList: "Print, Other")",
                        R"(critical initializePluginsForTasks: Loading unavailable task "Other")",
                        R"(* initializePluginsForTasks: Plugin init NOT started: "PluginC")",
                        R"(* initializePluginsForTasks: Plugin init started: "PrintOnly")",
                        R"(info initPlugin: Plugin initialized: "PrintOnly")",
                        R"(* initializePluginsForTasks: Plugin init started: "Printer")",
                        R"(info initPlugin: Plugin already initialized: "Printer")"};
    QTest::newRow("stop tasks")
        << Step([=](PluginManager& m) {
               printers(m);
               m.initializePluginsForTasks({"Print"});
           })
        << Step([](PluginManager& m) {
               m.deinitializePluginsForTasks({"Other", "Print"});
           })
        << QStringList {
               R"(debug deinitializePluginsForTasks: TaskList: "Other, Print")",
               R"(* deinitializePluginsForTasks: Unloading unavailable task "Other")",
               R"(* deinitializePluginsForTasks: Marking plugin for deinit: "PrintOnly")",
               R"(* deinitializePluginsForTasks: Marking plugin "Printer" NOT for deinit because of task: "Base")",
               R"(* deinitializePlugin: Plugin deinit started: "PrintOnly")",
               R"(info deinitPlugin: Plugin "PrintOnly" deinitialized.)"};
    QTest::newRow("close check")
        << closing << Step([](PluginManager& m) { m.checkIfApplicationCanClose(); })
        << QStringList {R"(debug checkIfApplicationCanClose: Ask Plugin: "PluginB")",
                        R"(* checkIfApplicationCanClose: Plugin CANNOT close: "PluginB")",
                        R"(debug checkIfApplicationCanClose: Ask Plugin: "PluginC")",
                        R"(* checkIfApplicationCanClose: Plugin can close: "PluginC")",
                        R"(debug checkIfApplicationCanClose: Ask Plugin: "PluginA")",
                        R"(* checkIfApplicationCanClose: Plugin can close: "PluginA")"};
    QTest::newRow("unload one not loaded")
        << nothing << Step([](PluginManager& m) { m.unloadPlugin("Nobody"); })
        << QStringList {R"(critical unloadPlugin: Plugin not loaded: "Nobody")"};
    const auto information = [](const QString& name) {
        return Step([name](PluginManager& m) {
            QString description;
            QString version;
            m.getPluginInformation(name, description, version);
        });
    };
    QTest::newRow("information")
        << loading({"PluginB"}) << information("PluginB")
        << QStringList {
               R"(debug getPluginInformation: Plugin "PluginB" ("0.12.0") = "test plug-in PluginB")"};
    QTest::newRow("information, not loaded")
        << nothing << information("Nobody")
        << QStringList {R"(critical getPluginInformation: Plugin not loaded "Nobody")"};
}

void tst_PluginManager::logLines()
{
    QFETCH(Step, arrange);
    QFETCH(Step, act);
    QFETCH(QStringList, lines);
    arrange(*manager);
    messages.clear();
    reasonOf([&] { act(*manager); });
    QStringList written = namingLines(messages);
    for (int i = 0; i < qMin(written.size(), lines.size()); ++i) {
        if (lines.at(i).startsWith(QLatin1String("* "))) {
            written[i] = "* " + written.at(i).section(' ', 1);
        }
    }
    QCOMPARE(written, lines);
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
    QCOMPARE(
        messages.filter(QRegularExpression("^critical orderPlugins: (\\w+ is missing|cycle):")),
        QStringList({"critical orderPlugins: MutualX is missing: SY (provided by MutualY)",
                     "critical orderPlugins: MutualY is missing: SX (provided by MutualX)",
                     "critical orderPlugins: cycle: MutualX -> SY -> MutualY -> SX -> MutualX"}));
}

void tst_PluginManager::optionalRequirementDoesNotBlock()
{
    manager->loadPlugin(QStringLiteral("Optional.dll"));
    manager->orderPlugins();
    manager->initPlugins();
    QVERIFY(manager->isInitialized(QStringLiteral("Optional")));
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

    QSignalSpy stopped(manager.get(), &PluginManager::signalPluginDeinitializedForTasks);
    manager->deinitializePluginsForTasks({QStringLiteral("Print")});
    QCOMPARE(stopped.count(), 1);
    QVERIFY(!manager->isInitialized(QStringLiteral("PrintOnly")));
    QVERIFY(manager->isInitialized(QStringLiteral("Printer")));

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

// A plug-in whose initialize() failed after its first service had registered: unloading it
// deletes that service, so it must not stay registered for the service manager to call.
void tst_PluginManager::failedStartLeavesNoServiceRegistered()
{
    const HelperRun run = runHelper(QCoreApplication::applicationDirPath() + "/PluginShutdown");
    QVERIFY2(run.err.contains("Failed to initialize plugin (TwoServices)"),
             qPrintable(run.report()));
    QVERIFY2(run.exitedCleanly(), qPrintable(run.report()));
    QVERIFY2(run.out.contains("registered after unload: \n"), qPrintable(run.report()));
    QVERIFY2(run.out.endsWith("shut down\n"), qPrintable(run.report()));
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
