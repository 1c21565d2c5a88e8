#include "FakeManagers.h"
#include "TestFiles.h"
#include "TestServices.h"

#include "Configuration/ConfigurationManager.h"
#include "Plugins/PluginManager.h"
#include "Plugins/ServiceCache.h"
#include "Plugins/ServiceManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QtTest>

#include <memory>

using namespace corvane::base::business;
using namespace corvane::test;

QStringList messages; // Qt's messages as "<level> <text>", the signals, the test's own lines

class FreshPluginManager : public PluginManager
{
};

// The lines naming a plug-in, file or task (debug-only ones aside), and the test's own.
const QRegularExpression naming(
    "^(signal|throws|note) |^\\w+ (test: \\w+ asked|.*Error during initialize"
    "|loadPlugin: (Plugin (loaded|already loaded|not recognized|name)|Failed)"
    "|orderPlugins: (Plugin (NOT )?ordered:|Failed to order the following plugins:|\\w+ is missing:"
    "|cycle:)|initPlugins?: (Plugin |No base task)|deinitPlugin: Plugin "
    "|(de)?initializePlugin: Plugin (init|deinit|already|not)"
    "|(de)?initializePluginsForTasks: (Loading unavailable|Unloading unavailable"
    "|Plugin init)"
    "|unloadPlugin: Plugin not loaded:|getPluginInformation: Plugin not loaded)");

QString each(const QString& line, const QStringList& names)
{
    QStringList lines;
    for (const QString& name : names)
        lines << line.arg(name);
    return lines.join(" / ");
}

class tst_PluginManager : public QObject
{
    Q_OBJECT

    std::unique_ptr<FreshPluginManager> manager;
    fakes::LoggingManager logging;

    // Steps separated by ", ": a verb and its plug-ins, files or tasks.
    void run(const QString& script)
    {
        for (const QString& step : script.split(", ", Qt::SkipEmptyParts)) {
            QStringList words = step.split(' ');
            const QString verb = words.takeFirst();
            const QString name = words.value(0);
            // A plug-in entry is "Library" or "Library:<configuration children>".
            if (verb == "start") {
                QByteArray xml = "<config><plugins>";
                for (const QString& entry : words)
                    xml += "<plugin><library>" + entry.section(':', 0, 0).toUtf8()
                        + "</library><configuration>" + entry.section(':', 1).toUtf8()
                        + "</configuration></plugin>";
                writeFile(QCoreApplication::applicationFilePath() + ".xml",
                          xml + "</plugins></config>");
                ConfigurationManager::instance()->deinitialize();
                ConfigurationManager::instance()->initialize();
            }
            QString failure = failureOf([&] {
                QString description, version;
                if (verb == "load")
                    for (const QString& library : words)
                        manager->loadPlugin(library + ".dll");
                else if (verb == "start")
                    manager->initialize();
                else if (verb == "order")
                    manager->orderPlugins();
                else if (verb == "init")
                    manager->initPlugins();
                else if (verb == "stop")
                    manager->deinitialize();
                else if (verb == "unload")
                    manager->unloadPlugin(name);
                else if (verb == "initialize")
                    manager->initializePlugin(name);
                else if (verb == "deinitialize")
                    manager->deinitializePlugin(name);
                else if (verb == "tasks")
                    manager->initializePluginsForTasks(words);
                else if (verb == "untasks")
                    manager->deinitializePluginsForTasks(words);
                else if (verb == "close")
                    messages << QString("note %1").arg(manager->checkIfApplicationCanClose());
                else if (verb == "information")
                    manager->getPluginInformation(name, description, version);
                if (!version.isEmpty())
                    messages << "note " + version + " " + description;
            });
            if (!failure.startsWith('<'))
                messages << "throws " + failure.remove("PluginManager::");
        }
    }

private slots:
    void initTestCase()
    {
        ManagerRegistry::instance()->registerManager(logging);
        ManagerRegistry::instance()->registerManager(*ConfigurationManager::instance());
    }

    void init()
    {
        messages.clear();
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            messages << QStringList {"debug", "warning", "critical", "fatal", "info"}.at(type) + " "
                    + text;
        });
        manager = std::make_unique<FreshPluginManager>();
        connect(manager.get(), &PluginManager::signalPluginLoaded,
                [](QString name) { messages << "signal loaded " + name; });
        connect(manager.get(), &PluginManager::signalPluginInitializedForBase,
                [] { messages << "signal base"; });
        connect(manager.get(), &PluginManager::signalPluginInitializedForTasks,
                [] { messages << "signal tasks"; });
        connect(manager.get(), &PluginManager::signalPluginDeinitializedForTasks,
                [] { messages << "signal stop"; });
    }

    void cleanup()
    {
        qInstallMessageHandler(nullptr);
        QCOMPARE(failureOf([this] { manager->deinitialize(); }), QStringLiteral("<no exception>"));
    }

    // The lines of each operation, their level ("*": free) and quotes (written '); one ending in
    // "..." stands for any that begins so. Last the plug-ins, initialized ones with "*".
    void logLines_data()
    {
        QTest::addColumn<QString>("row"); // steps to arrange " -> " to act " => " lines
        const QString loaded = "info loadPlugin: Plugin loaded: '%1' ('0.12.0') / signal loaded %1";
        const QString ordered = "info orderPlugins: Plugin ordered: '%1'";
        QTest::newRow("loading") << "load PluginB, unload PluginB, load PluginB PluginB, load "
                                    "Missing, load NotAPlugin => "
                + each(loaded, {"PluginB", "PluginB"})
                + " / critical loadPlugin: Plugin already loaded: 'PluginB.dll' / throws "
                  "loadPlugin Plugin already loaded: PluginB.dll / critical loadPlugin: Failed to "
                  "load plugin: 'Missing.dll' from '<dir>/libMissing.so' / throws loadPlugin "
                  "Failed to load plugin (Missing.dll). ... / critical loadPlugin: Plugin not "
                  "recognized: 'NotAPlugin.dll' / throws loadPlugin Plugin not recognized: "
                  "NotAPlugin.dll / PluginB";

        QTest::newRow("ordering, mutual requirement") << "load MutualY PluginC MutualX -> order => "
                + each(ordered, {"PluginC"})
                + " / critical orderPlugins: Failed to order the following plugins: 'MutualX, "
                  "MutualY' / critical orderPlugins: MutualX is missing: SY (provided by MutualY) "
                  "/ critical orderPlugins: MutualY is missing: SX (provided by MutualX) / "
                  "critical orderPlugins: cycle: MutualX -> SY -> MutualY -> SX -> MutualX / "
                  "throws orderPlugins Failed to order the following plugins: MutualX, MutualY / "
                  "MutualX MutualY PluginC";
        // PluginD also provides S1, so PluginA waits for it in the pass that could order it.
        QTest::newRow("ordering, a provider left over")
            << "load PluginD PluginA PluginB -> order => " + each(ordered, {"PluginB"})
                + " / debug orderPlugins: Plugin NOT ordered: 'PluginA' / critical orderPlugins: "
                  "Failed to order the following plugins: 'PluginA, PluginD' / critical "
                  "orderPlugins: "
                  "PluginA is missing: S1 (provided by PluginD) / critical orderPlugins: PluginD "
                  "is "
                  "missing: Missing (provided by nobody) / throws orderPlugins Failed to order the "
                  "following plugins: PluginA, PluginD / PluginA PluginB PluginD";
        QTest::newRow("the base task")
            << "load Printer PrintOnly PluginC, order -> init => info initPlugins: Plugin init "
               "started: 'PluginC' / info initPlugin: Plugin initialized: 'PluginC' / info "
               "initPlugins: Plugin init NOT started: 'PrintOnly' / info initPlugins: Plugin init "
               "started: 'Printer' / info initPlugin: Plugin initialized: 'Printer' / signal base "
               "/ PluginC* PrintOnly Printer*";
        QTest::newRow("no plug-ins") << "start => critical initPlugins: No base task. / ";
        QTest::newRow("failing start") << "start PluginB:<failInitialize>true</failInitialize> => "
                + each(loaded, {"PluginB"}) + " / " + each(ordered, {"PluginB"})
                + " / info initPlugins: Plugin init started: 'PluginB' / critical Error during "
                  "initialize of plugin. corvane::base::business::PluginManager::initPlugin Failed "
                  "to initialize plugin (PluginB)... / PluginB";
        QTest::newRow("by name")
            << "start PluginC PrintOnly Printer -> initialize PrintOnly, initialize PluginC, "
               "initialize Nobody, deinitialize PluginC, deinitialize PluginC => * "
               "initializePlugin: Plugin init started: 'PrintOnly' / info initPlugin: Plugin "
               "initialized: 'PrintOnly' / * initializePlugin: Plugin init started: 'PluginC' / "
               "critical initializePlugin: Plugin already initialized: 'PluginC' / throws "
               "initializePlugin Plugin already initialized: PluginC / * initializePlugin: Plugin "
               "init started: 'Nobody' / critical initializePlugin: Plugin not initialized: "
               "'Nobody' / throws initializePlugin Plugin not initialized: Nobody / * "
               "deinitializePlugin: Plugin deinit started: 'PluginC' / info deinitPlugin: Plugin "
               "'PluginC' deinitialized. / * deinitializePlugin: Plugin deinit started: 'PluginC' "
               "/ critical deinitializePlugin: Plugin already deinitialized: 'PluginC' / throws "
               "deinitializePlugin Plugin already deinitialized: PluginC / PluginC PrintOnly* "
               "Printer*";
        QTest::newRow("tasks")
            << "start PluginC PrintOnly Printer -> tasks Print Other, untasks Other Print => "
               "critical initializePluginsForTasks: Loading unavailable task 'Other' / * "
               "initializePluginsForTasks: Plugin init NOT started: 'PluginC' / * "
               "initializePluginsForTasks: Plugin init started: 'PrintOnly' / info initPlugin: "
               "Plugin initialized: 'PrintOnly' / * initializePluginsForTasks: Plugin init "
               "started: 'Printer' / info initPlugin: Plugin already initialized: 'Printer' / "
               "signal tasks / * deinitializePluginsForTasks: Unloading unavailable task 'Other' / "
               "* deinitializePlugin: Plugin deinit started: 'PrintOnly' / info deinitPlugin: "
               "Plugin 'PrintOnly' deinitialized. / signal stop / PluginC* PrintOnly Printer*";
        QTest::newRow("close, information, unload, stop in reverse start order")
            << "start PluginA PluginB:<canClose>false</canClose> PluginC -> close, information "
               "PluginB, information Nobody, unload Nobody, stop => info test: PluginB asked / "
               "info test: PluginC asked / info test: PluginA asked / note 0 / note 0.12.0 "
               "test plug-in PluginB / critical getPluginInformation: Plugin not loaded 'Nobody' / "
               "throws getPluginInformation Plugin not loadedNobody / critical unloadPlugin: "
               "Plugin not loaded: 'Nobody' / throws unloadPlugin Plugin not loaded: Nobody / info "
               "deinitPlugin: Plugin 'PluginA' deinitialized. / info deinitPlugin: Plugin "
               "'PluginC' deinitialized. / info deinitPlugin: Plugin 'PluginB' deinitialized. / ";
    }

    void logLines()
    {
        QFETCH(QString, row);
        compareLines(row, naming);
    }

    // A library whose plug-in reports a name already loaded takes the name; the earlier plug-in
    // is stopped if it runs, is not started again and is unloaded with the others. The test
    // plug-ins say "test: <library> initialized"; last the test libraries still loaded.
    void oneNameTwoLibraries_data()
    {
        QTest::addColumn<QString>("row");
        const QString loaded = "info loadPlugin: Plugin loaded: '%1' ('0.12.0') / signal loaded %1";
        const QString replaced = "warning loadPlugin: Plugin name already loaded: '%1' from '%2'; "
                                 "'%3' replaces it";
        const QString started = "info initPlugins: Plugin init started: '%1' / info test: %2 "
                                "initialized / info initPlugin: Plugin initialized: '%1'";
        const QString stopped = "info test: %2 deinitialized / info deinitPlugin: Plugin '%1' "
                                "deinitialized.";
        QTest::newRow("a renamed copy")
            << "start PluginB PluginBTwin PluginC, stop => " + loaded.arg("PluginB") + " / "
                + replaced.arg("PluginB", "PluginB.dll", "PluginBTwin.dll") + " / "
                + each(loaded, {"PluginB", "PluginC"})
                + " / info orderPlugins: Plugin ordered: 'PluginB' / info orderPlugins: Plugin "
                  "ordered: 'PluginC' / "
                + started.arg("PluginB", "PluginBTwin") + " / " + started.arg("PluginC", "PluginC")
                + " / signal base / " + stopped.arg("PluginC", "PluginC") + " / "
                + stopped.arg("PluginB", "PluginBTwin") + " /  / loaded:";
        QTest::newRow("one library named two ways")
            << "start PluginC PluginC.DLL, stop => " + loaded.arg("PluginC") + " / "
                + replaced.arg("PluginC", "PluginC.dll", "PluginC.DLL") + " / "
                + loaded.arg("PluginC")
                + " / info orderPlugins: Plugin ordered: 'PluginC' / "
                + started.arg("PluginC", "PluginC") + " / signal base / "
                + stopped.arg("PluginC", "PluginC") + " /  / loaded:";
        QTest::newRow("a started plug-in replaced")
            << "start PluginB -> load PluginBTwin, initialize PluginB, stop => "
                + replaced.arg("PluginB", "PluginB.dll", "PluginBTwin.dll") + " / "
                + stopped.arg("PluginB", "PluginB") + " / " + loaded.arg("PluginB")
                + " / * initializePlugin: Plugin init started: 'PluginB' / info test: PluginBTwin "
                  "initialized / info initPlugin: Plugin initialized: 'PluginB' / "
                + stopped.arg("PluginB", "PluginBTwin") + " /  / loaded:";
    }

    void oneNameTwoLibraries()
    {
        QFETCH(QString, row);
        static const QRegularExpression startedOrStopped("^info test: \\w+ (de)?initialized$");
        compareLines(row, QRegularExpression(naming.pattern() + '|' + startedOrStopped.pattern()),
                     loadedTestLibraries);
    }

private:
    // "loaded:" and the test libraries of this folder that some loader still holds.
    static QString loadedTestLibraries()
    {
        QString files;
        const QDir folder(QCoreApplication::applicationDirPath());
        for (const QFileInfo& file : folder.entryInfoList({"lib*.so"}, QDir::Files, QDir::Name))
            if (QLibrary(file.canonicalFilePath()).isLoaded())
                files += " " + file.fileName();
        return "loaded:" + files;
    }

    // Runs the steps of a row ("arrange -> act => lines") and compares the lines that match
    // filter with its own, followed by the plug-ins (sorted, initialized ones with "*") and the
    // extra line, if any.
    void compareLines(const QString& row, const QRegularExpression& filter,
                      QString (*extra)() = nullptr)
    {
        const QString steps = row.section(" => ", 0, 0);
        run(steps.section(" -> ", 0, -2));
        messages.clear();
        run(steps.section(" -> ", -1));
        QStringList names;
        manager->getAvailablePlugins(names);
        for (QString& name : names)
            name += manager->isInitialized(name) ? "*" : "";
        names.sort(); // the start order shows in the lines
        QStringList written = messages.filter(filter) << names.join(' ');
        if (extra != nullptr)
            written << extra();
        const QStringList expected = row.section(" => ", 1)
                                         .replace('\'', '"')
                                         .replace("<dir>", QCoreApplication::applicationDirPath())
                                         .split(" / ");
        for (int i = 0; i < qMin(written.size(), expected.size()); ++i) {
            if (expected.at(i).startsWith("* "))
                written[i] = "* " + written.at(i).section(' ', 1);
            if (expected.at(i).endsWith("...")
                && written.at(i).startsWith(expected.at(i).chopped(3)))
                written[i] = expected.at(i);
        }
        QCOMPARE(written, expected);
    }

private slots:
    // The cache keeps a service under each class of its chain, and what the manager found.
    void servicesAndTheirCache()
    {
        ServiceManager* services = ServiceManager::instance();
        ManagerRegistry::instance()->registerManager(*services);
        const auto cached = [](const char* key) {
            return ServiceCache::getServiceByInterface(key);
        };
        QVERIFY(cached("de.corvane.test.ICalculator/1.0") == nullptr); // nothing to find or keep
        FastCalculator fast;
        Calculator calculator;
        ServiceCache::addServiceToCache(&fast);
        ServiceCache::addServiceToCache(&calculator);
        QVERIFY(cached("corvane::test::FastCalculator") == &fast
                && cached("corvane::test::Calculator") == &calculator);
        QVERIFY(cached("corvane::base::core::utility::AbstractService") == &calculator);
        QVERIFY(!cached("corvane::base::interfaces::IService") && !cached("QObject"));

        Recorder a(QStringLiteral("a")), b(QStringLiteral("b")), other(QStringLiteral("a"));
        QString name = QStringLiteral("b"), nobody = QStringLiteral("nobody");
        services->registerService(a);
        services->registerService(b);
        services->registerService(calculator);
        const QStringList failures {failureOf([&] { services->registerService(other); }),
                                    failureOf([&] { services->getService(nobody); }),
                                    failureOf([&] { services->unregisterService(nobody); })};
        QCOMPARE(failures.join(" / "),
                 "ServiceManager::registerService Service already registered:a / "
                 "ServiceManager::getService Service not available: nobody / "
                 "ServiceManager::unregisterService Service not available: nobody");
        services->unregisterService(name);
        QVERIFY(services->getService("a") == &a && !services->isServiceAvailable(name));
        QStringList names {"stale"}; // cleared first
        services->getServicesByInterface("corvane::base::core::utility::AbstractService", names);
        QCOMPARE(names, QStringList {"corvane::test::Calculator"});
        QVERIFY(cached("de.corvane.test.ICalculator/1.0") == &calculator);
        name = "corvane::test::Calculator";
        services->unregisterService(name);
        QVERIFY(cached("de.corvane.test.ICalculator/1.0") == &calculator);
        ServiceCache::removeServiceFromCache(&calculator);
        QVERIFY(!cached("de.corvane.test.ICalculator/1.0") && !cached("corvane::test::Calculator"));
        QVERIFY(cached("corvane::test::FastCalculator") == &fast);
        ServiceCache::removeServiceFromCache(&fast);

        auto* dying = new Calculator;
        dying->initialize(); // registers itself
        delete dying; // still initialized: it must not stay registered
        services->deinitialize(); // unregisters, but does not deinitialize, every service
        services->getAvailableServices(names);
        QVERIFY(names.isEmpty() && events().isEmpty());
        QCOMPARE(
            messages.filter(QRegularExpression("^(info|critical) \\w+Service |^info deinit"))
                .join(" / "),
            "info registerService Service registered: a / info registerService Service registered: "
            "b / info registerService Service registered: corvane::test::Calculator / critical "
            "registerService Service already registered: a / critical getService Service not "
            "available: nobody / critical unregisterService Service not available: nobody / info "
            "unregisterService Service unregistered: b / info unregisterService Service "
            "unregistered: corvane::test::Calculator / info registerService Service registered: "
            "corvane::test::Calculator / info unregisterService Service unregistered: "
            "corvane::test::Calculator / info deinit called / info unregisterService Service "
            "unregistered: a / info deinit done");
        ManagerRegistry::instance()->unregisterManager(*services);
    }

    // A plug-in built against the other Qt major version is refused, and the reason says so.
    void pluginForTheOtherQtMajor()
    {
#ifndef OTHER_MAJOR_PLUGIN
        QSKIP("No build for the other Qt major version is named (CORVANE_OTHER_MAJOR_BUILD_DIR)");
#else
        QVERIFY2(QFile::exists(OTHER_MAJOR_PLUGIN), OTHER_MAJOR_PLUGIN " is not built");
        const QString copy = QCoreApplication::applicationDirPath() + "/libOtherMajor.so";
        QFile::remove(copy);
        QVERIFY(QFile::copy(OTHER_MAJOR_PLUGIN, copy));
        const QString failure = failureOf([this] { manager->loadPlugin("OtherMajor.dll"); });
        QFile::remove(copy);
        const int own = QT_VERSION_MAJOR;
        const int other = own == 5 ? 6 : 5;
        QVERIFY2(failure.startsWith("PluginManager::loadPlugin Failed to load plugin (OtherMajor.dll). ")
                     && failure.endsWith(QString(" The plug-in was built for Qt %1; this "
                                                 "application uses Qt %2.")
                                             .arg(other)
                                             .arg(own)),
                 qPrintable(failure));
        QStringList names;
        manager->getAvailablePlugins(names);
        QVERIFY(names.isEmpty());
#endif
    }
};

QTEST_MAIN(tst_PluginManager)
#include "tst_PluginManager.moc"
