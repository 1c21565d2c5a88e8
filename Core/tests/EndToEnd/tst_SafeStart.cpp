#include "Processes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

namespace {
const QString crasher = "<plugin><library>Crasher</library><configuration>%1</configuration>"
                        "</plugin>";
const QString ended = "The last start ended while plug-in Crasher was initializing";
} // namespace

// The demo (console: "safe-demo", GUI: "safe-gui", both named "safe") in a temporary folder with
// a test plug-in that can end the process in its initialize(), and a state folder of its own.
class tst_SafeStart : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString state = folder.filePath("state/safe");

    // "crash": what Crasher's initialize() does; more: what else <information> says.
    void configure(const QString& type, const QString& crash, const QString& more = {})
    {
        const QString gui = "<plugin><library>Window</library></plugin>";
        const QString report = "<plugin><library>Report</library><configuration><format>csv"
                               "</format></configuration></plugin>";
        const QString xml
            = "<config><information><applicationname>safe</applicationname><applicationtype>%1"
              "</applicationtype>%2</information><plugins><plugin><library>Inventory</library>"
              "<configuration><file>inventory.csv</file></configuration></plugin>%3%4</plugins>"
              "</config>";
        writeFile(folder.filePath(type == "GUI" ? "safe-gui.xml" : "safe-demo.xml"),
                  xml.arg(type, more, type == "GUI" ? gui : report, crasher.arg(crash)).toUtf8());
    }
    Run start(const QString& type, const QProcessEnvironment& with)
    {
        QFile::remove(log());
        return run(folder.filePath(type == "GUI" ? "safe-gui" : "safe-demo"), {}, with);
    }
    // A console start that Crasher ends; "hang": killed from outside once its record names
    // Crasher's initialize().
    Run crashingStart(const QString& crash, const QProcessEnvironment& with)
    {
        if (crash != "hang")
            return start("CONSOLE", with);
        QFile::remove(log());
        QProcess process;
        process.setProcessEnvironment(with);
        process.start(folder.filePath("safe-demo"), QStringList());
        const qint64 pid = process.waitForStarted() ? process.processId() : 0;
        const QString own = "start-" + QString::number(pid);
        QTest::qWaitFor([&] {
            return readFile(state + '/' + own).contains("phase=initializing\nplugin=Crasher\n");
        }, 30000);
        signalProcess(pid, SIGKILL);
        process.waitForFinished();
        return {process.exitStatus() == QProcess::CrashExit ? -2 : process.exitCode(),
                process.readAllStandardOutput(), process.readAllStandardError()};
    }
    QString log() const { return folder.filePath("logs/corvane-demo.log"); }
    QStringList records() const { return QDir(state).entryList({"start-*"}, QDir::Files); }

private slots:
    void initTestCase()
    {
        QVERIFY(copyInto(folder.path(), DEMO_FOLDER,
                         {"libInventory.so", "libReport.so", "libWindow.so", "inventory.csv",
                          QCoreApplication::applicationDirPath() + "/libCrasher.so"}));
        QVERIFY(QFile::copy(DEMO_FOLDER "/corvane-demo", folder.filePath("safe-demo")));
        QVERIFY(QFile::copy(QUESTIONED_DEMO, folder.filePath("safe-gui")));
        for (const QString& name : {"safe-demo", "safe-gui"})
            QVERIFY(QFile::copy(DEMO_FOLDER "/corvane-demo.properties",
                                folder.filePath(name + ".properties")));
        QVERIFY(QDir().mkpath(folder.filePath("translations")));
        QVERIFY(QFile::copy(TRANSLATIONS_FOLDER "/StartUp_de.qm",
                            folder.filePath("translations/StartUp_de.qm")));
        environment.insert("XDG_STATE_HOME", folder.filePath("state"));
        environment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", "300");
        for (const char* variable : {"CORVANE_SAFE_START", "CORVANE_DISABLE_PLUGINS", "LC_ALL",
                                     "LC_MESSAGES", "LANGUAGE", "CORVANE_STARTUP_TRACE"})
            environment.remove(variable);
        environment.insert("LANG", "C");
    }
    void cleanup() { QDir(folder.filePath("state")).removeRecursively(); }

    // The first start ends in Crasher's initialize(): its record stays. The second start warns;
    // with safe start (variable or configuration) it leaves Crasher out and runs, without it
    // Crasher ends this start too.
    void crashThenStartAgain_data()
    {
        QTest::addColumn<QString>("crash"); // abort, segv, or hang: killed from outside
        QTest::addColumn<QString>("safeStart"); // "", "environment" or "configuration"
        for (const QString& crash : {"abort", "segv", "hang"}) {
            for (const QString& safeStart : {"", "environment", "configuration"}) {
                QTest::addRow("%s, %s", qPrintable(crash),
                              safeStart.isEmpty() ? "no safe start" : qPrintable(safeStart))
                    << crash << safeStart;
            }
        }
    }
    void crashThenStartAgain()
    {
        QFETCH(QString, crash);
        QFETCH(QString, safeStart);
        configure("CONSOLE", "<crashInitialize>" + crash + "</crashInitialize>",
                  safeStart == "configuration" ? "<safestart>true</safestart>" : "");
        QProcessEnvironment second = environment;
        if (safeStart == "environment")
            second.insert("CORVANE_SAFE_START", "1");

        QVERIFY(crashingStart(crash, environment).exitCode != 0);
        QCOMPARE(records().size(), 1);
        const QString record = readFile(state + '/' + records().first());
        QVERIFY2(QRegularExpression("^pid=\\d+\nstarted=\\d+\nphase=initializing\nplugin=Crasher\n"
                                    "library=Crasher\\.dll\n$")
                     .match(record)
                     .hasMatch(),
                 qPrintable(record));
        struct stat status {};
        QCOMPARE(::stat(QFile::encodeName(state + '/' + records().first()), &status), 0);
        QCOMPARE(status.st_mode & 0777, 0600u); // the user's alone, as its folder
        QCOMPARE(::stat(QFile::encodeName(state), &status), 0);
        QCOMPARE(status.st_mode & 0777, 0700u);

        const Run result = safeStart.isEmpty() ? crashingStart(crash, second)
                                               : start("CONSOLE", second);
        QCOMPARE(result.err.count(ended), 1);
        const QString written = readFile(log());
        // Named as the record names it, Crasher matches its library: left out unloaded.
        const QString leftOut
            = "loadPlugins: Plugin disabled: \"Crasher.dll\" (left out of this start)";
        if (safeStart.isEmpty()) { // only warned: Crasher ended this start as well
            QVERIFY(result.exitCode != 0);
            QCOMPARE(records().size(), 1);
            QVERIFY(!written.contains(leftOut));
        } else {
            QCOMPARE(result.exitCode, 0);
            QVERIFY2(written.contains(leftOut), qPrintable(written.right(3000)));
            QVERIFY(result.out.startsWith("item,price,quantity,received\n")); // the rest ran
            QCOMPARE(records(), QStringList());
        }
    }

    // A start that fails without a crash takes its record away.
    void cleanFailureLeavesNoRecord_data()
    {
        QTest::addColumn<QString>("plugin");
        QTest::addColumn<QString>("failure"); // in the log
        QTest::newRow("initialize() throws")
            << crasher.arg("<failInitialize>true</failInitialize>")
            << "Failed to initialize plugin (Crasher)";
        QTest::newRow("library missing") << "<plugin><library>Missing</library></plugin>"
                                         << "Failed to load plugin (Missing.dll)";
    }
    void cleanFailureLeavesNoRecord()
    {
        QFETCH(QString, plugin);
        QFETCH(QString, failure);
        configure("CONSOLE", "");
        QString xml = readFile(folder.filePath("safe-demo.xml"));
        writeFile(folder.filePath("safe-demo.xml"), xml.replace(crasher.arg(""), plugin).toUtf8());
        const Run result = start("CONSOLE", environment);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(QString(readFile(log())).contains(failure));
        QVERIFY(QFileInfo(state).isDir()); // it was recorded
        QCOMPARE(records(), QStringList());
        QVERIFY(!start("CONSOLE", environment).err.contains("The last start ended"));
    }

    // After a crash the GUI asks, in German here: this time without Crasher, or disabled until
    // corvane-plugins enables it again.
    void guiQuestion_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("start without it this time") << "leaveOutThisTime";
        QTest::newRow("disable it") << "disableUntilEnabled";
    }
    void guiQuestion()
    {
        QFETCH(QString, button);
        configure("GUI", "<crashInitialize>abort</crashInitialize>");
        QVERIFY(start("GUI", environment).exitCode != 0);
        QCOMPARE(records().size(), 1);

        QProcessEnvironment german = environment;
        german.insert("LANG", "de_DE.UTF-8");
        german.insert("CORVANE_TEST_CLICK", button);
        Run result = start("GUI", german);
        QCOMPARE(result.outcome(),
                 "0 box: safe-gui: Der letzte Start endete, während das Plug-in Crasher "
                 "initialisiert wurde.\n\nDiesmal ohne das Plug-in starten, oder es deaktivieren, "
                 "bis es wieder aktiviert wird?\n");
        const bool disable = button == "disableUntilEnabled";
        const QString reason = disable ? "disabled until it is enabled again" : "left out of this start";
        QVERIFY(QString(readFile(log())).contains("loadPlugins: Plugin disabled: \"Crasher.dll\" (" + reason + ")"));
        QCOMPARE(readFile(state + "/disabled-plugins"), disable ? "Crasher\n" : "<missing>");
        QCOMPARE(records(), QStringList());

        result = start("GUI", environment); // no question now
        if (!disable) { // Crasher is back, and ends the start again
            QVERIFY(result.exitCode != 0);
            QCOMPARE(records().size(), 1);
            return;
        }
        QCOMPARE(result.outcome(), "0 ");
        QVERIFY(readFile(log()).contains("(disabled until it is enabled again)"));
        const QString configuration = folder.filePath("safe-gui.xml");
        QCOMPARE(run(CORVANE_PLUGINS_PROGRAM, {"order", configuration}, environment).out.section('\n', -4),
                 "Disabled:\n  -  Crasher.dll (disabled until it is enabled again)\nCrasher is "
                 "disabled until it is enabled again: corvane-plugins enable Crasher "
                     + configuration + "\n");
        QCOMPARE(run(CORVANE_PLUGINS_PROGRAM, {"enable", "Crasher", configuration}, environment)
                     .outcome(),
                 "0 Enabled Crasher for safe.\n");
        QCOMPARE(readFile(state + "/disabled-plugins"), "<missing>");
        QCOMPARE(run(CORVANE_PLUGINS_PROGRAM, {"enable", "Crasher", configuration}, environment)
                     .exitCode,
                 1);
    }

    // CORVANE_STARTUP_TRACE: the phases of the start as complete events, each plug-in's load
    // and initialize once, in start order; corvane-plugins profiles the same start.
    void trace()
    {
        configure("CONSOLE", "");
        QProcessEnvironment traced = environment;
        traced.insert("CORVANE_STARTUP_TRACE", "start.json"); // relative to where it starts
        QProcess process;
        process.setProcessEnvironment(traced);
        process.setWorkingDirectory(folder.path());
        process.start(folder.filePath("safe-demo"), QStringList());
        const qint64 pid = process.processId();
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 0);
        QJsonParseError error {};
        const QJsonDocument document
            = QJsonDocument::fromJson(readFile(folder.filePath("start.json")), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QStringList phases;
        double previousStart = -1;
        for (const QJsonValue& value : document.object().value("traceEvents").toArray()) {
            const QJsonObject event = value.toObject();
            if (event.value("ph") != "X" || event.value("cat") != "plugin")
                continue;
            QVERIFY(event.value("ts").toDouble() >= previousStart);
            QVERIFY(event.value("dur").toDouble() >= 0);
            QCOMPARE(event.value("pid").toInt(), int(pid));
            previousStart = event.value("ts").toDouble();
            phases << event.value("name").toString();
        }
        QCOMPARE(phases, QStringList({"load InventoryPlugin", "load ReportPlugin",
                                      "load Crasher", "initialize Crasher",
                                      "initialize InventoryPlugin", "initialize ReportPlugin"}));
        QStringList framework;
        for (const QJsonValue& value : document.object().value("traceEvents").toArray()) {
            if (value.toObject().value("cat") == "framework")
                framework << value.toObject().value("name").toString();
        }
        QCOMPARE(framework, QStringList({"read configuration", "create application", "set up logging",
                                         "configuration manager", "order plug-ins",
                                         "start-up"}));
        const Run profile = run(CORVANE_PLUGINS_PROGRAM,
                                {"profile", folder.filePath("safe-demo.xml")}, environment);
        QCOMPARE(profile.exitCode, 0);
        const QStringList lines = profile.out.split('\n');
        QVERIFY2(QRegularExpression("^Start-up of .*safe-demo\\.xml, \\d+\\.\\d ms until the "
                                    "event loop ran:$")
                     .match(lines.value(0))
                     .hasMatch(),
                 qPrintable(profile.out));
        QCOMPARE(lines.size(), 2 + 11 + 2); // and what lies between the phases
        QVERIFY(lines.at(13).endsWith("%  (between the phases)"));
        double previous = 1e9;
        for (const QString& line : lines.mid(2, 11)) {
            const double ms = line.section(' ', 0, 0, QString::SectionSkipEmpty).toDouble();
            QVERIFY2(ms <= previous, qPrintable(profile.out));
            previous = ms;
        }
    }
};

QTEST_MAIN(tst_SafeStart)
#include "tst_SafeStart.moc"
