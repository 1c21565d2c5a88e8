#include "Processes.h"

namespace {
const QString plugins = QDir::cleanPath(TEST_PLUGIN_FOLDER);

Run tool(const QStringList& arguments,
         const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    return run(CORVANE_PLUGINS_PROGRAM, arguments, environment);
}

QByteArray configurationOf(const QStringList& libraries) // named in this order
{
    QByteArray text = "<config>\n  <plugins>\n";
    for (const QString& library : libraries) {
        text += "    <plugin><library>" + library.toUtf8() + "</library></plugin>\n";
    }
    return text + "  </plugins>\n</config>\n";
}

// The DOT text read back with DOT's quoting, a line each in sorted order: a node as "name: label",
// an arrow as "from -> to: label" ("\n" in a label as "/"), then " dashed" and the colour if so.
QString readDot(const QString& dot)
{
    const QString quoted = R"x("((?:[^"\\]|\\.)*)")x";
    const QRegularExpression line("^  " + quoted + "(?: -> " + quoted + ")? \\[(.*)\\];$");
    const QRegularExpression attribute(R"x((\w+)=(?:"((?:[^"\\]|\\.)*)"|(\w+)))x");
    const auto unquoted = [](QString text) {
        return text.replace("\\n", "/").replace("\\\"", "\"").replace("\\\\", "\\");
    };
    QStringList lines = dot.split('\n'), read;
    if (lines.mid(0, 3) != QStringList {"digraph plugins {", "  rankdir=BT;", "  node [shape=box];"}
        || lines.mid(lines.size() - 2) != QStringList {"}", ""}) {
        return "malformed: " + dot;
    }
    for (const QString& text : lines.mid(3, lines.size() - 5)) {
        const QRegularExpressionMatch match = line.match(text);
        QHash<QString, QString> values;
        for (auto it = attribute.globalMatch(match.captured(3)); it.hasNext();) {
            const QRegularExpressionMatch value = it.next();
            values[value.captured(1)] = unquoted(value.captured(2) + value.captured(3));
        }
        const QString to = match.captured(2).isNull() ? "" : " -> " + unquoted(match.captured(2));
        read << (!match.hasMatch() ? "malformed: " + text
                                   : unquoted(match.captured(1)) + to + ": " + values["label"]
                         + (values["style"] == "dashed" ? " dashed" : "")
                         + (values.contains("color") ? " " + values["color"] : ""));
    }
    read.sort();
    return read.join('\n');
}
} // namespace

// The installed-to-be corvane-plugins program on real test plug-ins, with configurations and
// applications written into a temporary folder.
class tst_PluginsTool : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;

private slots:
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(folder.path()));
        for (const QString& name : {"app/demo", "two/demo", "two/other"}) { // <name>.xml beside
            QVERIFY(QDir().mkpath(QFileInfo(name).path()));
            writeFile(name, "#!/bin/sh\n");
            QVERIFY(QFile::setPermissions(name, QFile::ReadOwner | QFile::ExeOwner));
            writeFile(name + ".xml", configurationOf({"PluginC"}));
        }
        writeFile("app/plugins.xml", configurationOf({"PluginB"})); // no application's
        QVERIFY(QFile::copy(plugins + "/libPluginC.so", "app/libPluginC.so"));
    }

    void runs_data()
    {
        QTest::addColumn<QByteArray>("configuration"); // written to app.xml
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out"); // %F: the plug-ins' folder; DOT as readDot() reads it
        QTest::addColumn<QString>("err"); // a regular expression
        const QStringList order {"order", "app.xml", "--folder", plugins};
        const QStringList graph {"graph", "app.xml", "--folder", plugins};
        const QByteArray passes = configurationOf({"Alpha", "PluginB", "Chained", "Optional"});
        const QByteArray left
            = configurationOf({"MutualY", "PluginA", "PrintOnly", "MutualX", "PluginD"});
        const QString usage = "\nUsage: .*corvane-plugins6? \\[options\\] command configuration\n";
        // Pass 1 orders, in name order, what needs nothing that is missing (an optional service
        // nobody provides does not count); the next passes what the earlier ones provide.
        QTest::newRow("three passes") << passes << order << 0
                                      << "Start order of app.xml (plug-ins from %F):\n"
                                         "  1  Optional 0.12.0  pass 1\n"
                                         "       requires: Nobody (optional, provided by nobody)\n"
                                         "  2  PluginB 0.12.0   pass 1\n"
                                         "       provides: S1\n"
                                         "  3  Chained 0.12.0   pass 2\n"
                                         "       provides: S2\n"
                                         "       requires: S1\n"
                                         "  4  Alpha 0.12.0     pass 3\n"
                                         "       requires: S2, S1 (optional)\n"
                                         "4 of 4 plug-ins can be ordered, in 3 passes.\n"
                                      << "^$";
        QTest::newRow("left over") << left << order << 1
                                   << "Start order of app.xml (plug-ins from %F):\n"
                                      "  1  PrintOnly 0.12.0  pass 1\n"
                                      "       tasks: Print (not started with the application)\n"
                                      "Not ordered:\n"
                                      "  -  MutualX 0.12.0\n"
                                      "       provides: SX\n"
                                      "       requires: SY\n"
                                      "  -  MutualY 0.12.0\n"
                                      "       provides: SY\n"
                                      "       requires: SX\n"
                                      "  -  PluginA 0.12.0\n"
                                      "       requires: S1\n"
                                      "  -  PluginD 0.12.0\n"
                                      "       provides: S1\n"
                                      "       requires: Missing\n"
                                      "Why:\n"
                                      "  MutualX is missing: SY (provided by MutualY)\n"
                                      "  MutualY is missing: SX (provided by MutualX)\n"
                                      "  PluginA is missing: S1 (provided by PluginD)\n"
                                      "  PluginD is missing: Missing (provided by nobody)\n"
                                      "  cycle: MutualX -> SY -> MutualY -> SX -> MutualX\n"
                                      "4 of 5 plug-ins cannot be ordered: MutualX, MutualY, "
                                      "PluginA, PluginD.\n"
                                   << "^$";
        QTest::newRow("no plug-ins")
            << configurationOf({}) << order << 0
            << "Start order of app.xml (plug-ins from %F):\nNo plug-ins configured.\n"
            << "^$";
        QTest::newRow("graph, three passes")
            << passes << graph << 0
            << "Alpha -> Chained: S2\n"
               "Alpha -> PluginB: S1 dashed\n"
               "Alpha: Alpha 0.12.0/pass 3\n"
               "Chained -> PluginB: S1\n"
               "Chained: Chained 0.12.0/pass 2\n"
               "Optional -> missing: Nobody: Nobody dashed gray\n"
               "Optional: Optional 0.12.0/pass 1\n"
               "PluginB: PluginB 0.12.0/pass 1\n"
               "missing: Nobody: Nobody/provided by nobody dashed gray"
            << "^$";
        QTest::newRow("graph, left over")
            << left << graph << 1
            << "MutualX -> MutualY: SY red\n"
               "MutualX: MutualX 0.12.0/not ordered red\n"
               "MutualY -> MutualX: SX red\n"
               "MutualY: MutualY 0.12.0/not ordered red\n"
               "PluginA -> PluginD: S1\n"
               "PluginA: PluginA 0.12.0/not ordered red\n"
               "PluginD -> missing: Missing: Missing red\n"
               "PluginD: PluginD 0.12.0/not ordered red\n"
               "PrintOnly: PrintOnly 0.12.0/pass 1\n"
               "missing: Missing: Missing/provided by nobody dashed red"
            << "^$";
        QTest::newRow("application folder")
            << QByteArray() << QStringList {"order", "app"} << 0
            << "Start order of app (plug-ins from " + folder.filePath("app")
                + "):\n  1  PluginC 0.12.0  pass 1\n1 of 1 plug-in can be ordered, in 1 pass.\n"
            << "^$";
        QTest::newRow("several applications")
            << QByteArray() << QStringList {"order", "two"} << 2 << ""
            << "^corvane-plugins: 'two' holds several applications \\(demo\\.xml, other\\.xml\\): "
               "name the configuration file\n$";
        QTest::newRow("folder without application")
            << QByteArray() << QStringList {"order", "."} << 3 << ""
            << "^corvane-plugins: no application in '\\.' \\(an executable with <its name>\\.xml "
               "beside it\\)\n$";
        QTest::newRow("missing configuration")
            << QByteArray() << QStringList {"graph", "nope.xml"} << 3 << ""
            << "^Error: Cannot open config file: /.*/nope\\.xml\n$";
        QTest::newRow("missing library")
            << configurationOf({"PluginC", "Absent"}) << order << 1 << ""
            << "^corvane-plugins: Failed to load plugin \\(Absent\\.dll\\)\\. .+\n$";
        QTest::newRow("unknown command")
            << QByteArray() << QStringList {"start", "app.xml"} << 2 << ""
            << "^corvane-plugins: expected a command \\(order, graph, check, profile or enable\\) and "
               "a configuration"
                + usage;
        QTest::newRow("--svg without graph")
            << QByteArray() << QStringList {"order", "--svg", "x.svg", "app.xml"} << 2 << ""
            << "^corvane-plugins: --svg belongs to the graph command" + usage;
        QTest::newRow("unknown option")
            << QByteArray() << QStringList {"order", "--fast", "app.xml"} << 2 << ""
            << "^corvane-plugins: Unknown option 'fast'\\." + usage;
    }
    // The library's and the plug-ins' log lines stay off standard error.
    void runs()
    {
        QFETCH(QByteArray, configuration);
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, out);
        QFETCH(QString, err);
        writeFile("app.xml", configuration);
        const Run result = tool(arguments);
        QCOMPARE(arguments[0] == "graph" && exitCode < 2 ? readDot(result.out) : result.out,
                 out.replace("%F", plugins));
        QVERIFY2(QRegularExpression(err).match(result.err).hasMatch(), qPrintable(result.err));
        QCOMPARE(result.exitCode, exitCode);
    }

    // A plug-in disabled by the configuration or by CORVANE_DISABLE_PLUGINS (a plug-in's name or
    // any form of a library's) is not started, nor is what requires its services, one line each
    // with why; what only optionally requires them still is.
    void disabling_data()
    {
        QTest::addColumn<QByteArray>("configuration");
        QTest::addColumn<QString>("disable"); // CORVANE_DISABLE_PLUGINS
        QTest::addColumn<QString>("out");
        const QByteArray four = configurationOf({"PluginA", "PluginB", "Hopeful", "PluginC"});
        const QString started = "Start order of app.xml (plug-ins from %F):\n"
                                "  1  Hopeful 0.12.0  pass 1\n"
                                "       requires: S1 (optional, provided by nobody)\n"
                                "  2  PluginC 0.12.0  pass 1\n"
                                "2 of 2 plug-ins can be ordered, in 1 pass.\n"
                                "Disabled:\n";
        const QString byName = "  -  PluginB (disabled by CORVANE_DISABLE_PLUGINS)\n"
                               "  -  PluginA (requires S1, which the disabled PluginB provides)\n";
        const QString byLibrary
            = "  -  PluginB.dll (disabled by CORVANE_DISABLE_PLUGINS)\n"
              "  -  PluginA (requires S1, which no enabled plug-in provides)\n";
        // PluginBTwin's plug-in is named PluginB: its library is loaded to learn the name.
        QTest::newRow("plug-in name")
            << configurationOf({"PluginA", "PluginBTwin", "Hopeful", "PluginC"}) << "PluginB"
            << started + byName;
        QTest::newRow("library stem, with blanks and others")
            << four << " Nothing , PluginB ," << started + byLibrary;
        QTest::newRow("library file") << four << "libPluginB.so" << started + byLibrary;
        QTest::newRow("configured library") << four << "PluginB.dll" << started + byLibrary;
        QByteArray disabledEntry = four;
        disabledEntry.replace("<plugin><library>PluginB", "<plugin enabled=\"false\"><library>PluginB");
        QTest::newRow("configuration")
            << disabledEntry << ""
            << started
                + "  -  PluginB.dll (disabled by the configuration)\n"
                  "  -  PluginA (requires S1, which no enabled plug-in provides)\n";
        QTest::newRow("one after the other") // Alpha needs S2 of Chained, which needs S1
            << configurationOf({"Alpha", "PluginB", "Chained", "PluginC"}) << "PluginB"
            << "Start order of app.xml (plug-ins from %F):\n"
               "  1  PluginC 0.12.0  pass 1\n"
               "1 of 1 plug-in can be ordered, in 1 pass.\n"
               "Disabled:\n"
               "  -  PluginB.dll (disabled by CORVANE_DISABLE_PLUGINS)\n"
               "  -  Chained (requires S1, which no enabled plug-in provides)\n"
               "  -  Alpha (requires S2, which the disabled Chained provides)\n";
        QTest::newRow("nothing named") // as without the variable
            << configurationOf({"PluginC"}) << "Nothing"
            << "Start order of app.xml (plug-ins from %F):\n"
               "  1  PluginC 0.12.0  pass 1\n"
               "1 of 1 plug-in can be ordered, in 1 pass.\n";
    }
    void disabling()
    {
        QFETCH(QByteArray, configuration);
        QFETCH(QString, disable);
        QFETCH(QString, out);
        writeFile("app.xml", configuration);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("CORVANE_DISABLE_PLUGINS", disable);
        const Run result = tool({"order", "app.xml", "--folder", plugins, "--verbose"}, environment);
        QCOMPARE(result.out, out.replace("%F", plugins));
        QCOMPARE(result.exitCode, 0);
        // The log says the same, one line each.
        QStringList logged;
        const QRegularExpression line("loadPlugins: Plugin disabled: \"(\\S+)\" (\\(.*\\))\n");
        for (auto match = line.globalMatch(result.err); match.hasNext();) {
            const QRegularExpressionMatch found = match.next();
            logged << "  -  " + found.captured(1) + ' ' + found.captured(2) + '\n';
        }
        QCOMPARE(logged.join(""), out.section("Disabled:\n", 1));
    }

    // The table of a trace, the most costly phase first, with its share of the whole start-up.
    void profile_data()
    {
        QTest::addColumn<QByteArray>("trace");
        QTest::addColumn<QString>("outcome");
        const QByteArray events
            = R"([{"name":"process_name","ph":"M","pid":1,"tid":1,"args":{"name":"app"}},
                 {"name":"load P","ph":"X","ts":100,"dur":2500,"pid":1,"tid":1,
                  "args":{"phase":"load","plugin":"P"}},
                 {"name":"initialize P","ph":"X","ts":2700,"dur":12260,"pid":1,"tid":1,
                  "args":{"phase":"initialize","plugin":"P"}},
                 {"name":"order plug-ins","ph":"X","ts":2600,"dur":40,"pid":1,"tid":1,
                  "args":{"phase":"order plug-ins"}},
                 {"name":"start-up","ph":"X","ts":0,"dur":20000,"pid":1,"tid":1,
                  "args":{"phase":"start-up"}}])";
        QTest::newRow("trace object") << "{\"traceEvents\":" + events + "}"
                                      << "0 Start-up of t.json, 20.0 ms until the event loop ran:\n"
                                         "      ms   share  phase\n"
                                         "    12.3   61.3%  initialize P\n"
                                         "     2.5   12.5%  load P\n"
                                         "     0.0    0.2%  order plug-ins\n"
                                         "     5.2   26.0%  (between the phases)\n";
        QTest::newRow("array of events") << events << "0 Start-up of t.json, 20.0 ms until the event loop ran:\n"
                                         "      ms   share  phase\n"
                                         "    12.3   61.3%  initialize P\n"
                                         "     2.5   12.5%  load P\n"
                                         "     0.0    0.2%  order plug-ins\n"
                                         "     5.2   26.0%  (between the phases)\n";
        QTest::newRow("not JSON") << QByteArray("{\"traceEvents\": [") << "1 ";
        QTest::newRow("no complete events") << QByteArray("[]") << "1 ";
    }
    void profile()
    {
        QFETCH(QByteArray, trace);
        QFETCH(QString, outcome);
        writeFile("t.json", trace);
        const Run result = tool({"profile", "t.json"});
        QCOMPARE(result.outcome(), outcome);
        QCOMPARE(result.err.startsWith("corvane-plugins: no start-up trace in t.json: "),
                 result.exitCode == 1);
    }

    // Rendered with Graphviz's dot; without it, the tool says so and writes nothing.
    void svg()
    {
        writeFile("app.xml", configurationOf({"MutualX", "MutualY", "PluginC"}));
        const QStringList arguments {"graph", "app.xml", "--folder", plugins, "--svg", "g.svg"};
        QProcessEnvironment noGraphviz = QProcessEnvironment::systemEnvironment();
        noGraphviz.insert("PATH", "/nonexistent");
        Run result = tool(arguments, noGraphviz);
        QCOMPARE(result.outcome() + result.err,
                 "4 corvane-plugins: cannot write '" + folder.filePath("g.svg")
                     + "': Graphviz's 'dot' is not installed (Debian package graphviz)\n");
        QVERIFY(!QFile::exists("g.svg"));
        if (QStandardPaths::findExecutable("dot").isEmpty()) {
            QSKIP("Graphviz's dot is not installed");
        }
        result = tool(arguments); // 1: the cycle still keeps two plug-ins from starting
        QCOMPARE(result.outcome() + result.err,
                 "1 Wrote the service graph of app.xml to " + folder.filePath("g.svg") + ".\n");
        QVERIFY(readFile("g.svg").startsWith("<?xml"));
    }
};

QTEST_MAIN(tst_PluginsTool)
#include "tst_PluginsTool.moc"
