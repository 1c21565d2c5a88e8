#include "TestFiles.h"

#include <QtTest>

#include <csignal>

namespace {

struct Result
{
    int exitCode;
    QString out;
    QString err;
};

const QString pluginFolder = QDir::cleanPath(QStringLiteral(TEST_PLUGIN_FOLDER));

// A configuration naming the given plug-in libraries, in that order.
QByteArray configurationOf(const QStringList& libraries)
{
    QByteArray text = "<config>\n  <plugins>\n";
    for (const QString& library : libraries) {
        text += "    <plugin><library>" + library.toUtf8() + "</library></plugin>\n";
    }
    return text + "  </plugins>\n</config>\n";
}

// The graph's nodes ("name: label", " [red]" appended when red) and arrows ("from -> to:
// label", then " dashed", " red" or " gray"), read back from the DOT text with DOT's quoting.
struct Graph
{
    QStringList nodes;
    QStringList edges;
    bool wellFormed = false;
};

Graph parseDot(const QString& text)
{
    static const QString quotedText = QStringLiteral("\"((?:[^\"\\\\]|\\\\.)*)\"");
    static const QRegularExpression edge("^  " + quotedText + " -> " + quotedText
                                         + " \\[(.*)\\];$");
    static const QRegularExpression node("^  " + quotedText + " \\[(.*)\\];$");
    static const QRegularExpression attribute("(\\w+)=(?:\"((?:[^\"\\\\]|\\\\.)*)\"|(\\w+))");
    const auto unquoted = [](QString text) {
        return text.replace("\\n", "/").replace("\\\"", "\"").replace("\\\\", "\\");
    };
    const auto attributes = [&](const QString& list) {
        QHash<QString, QString> values;
        auto it = attribute.globalMatch(list);
        while (it.hasNext()) {
            const auto match = it.next();
            values.insert(match.captured(1), unquoted(match.captured(2) + match.captured(3)));
        }
        return values;
    };

    Graph graph;
    QStringList lines = text.split('\n');
    graph.wellFormed = lines.size() > 4 && lines.takeFirst() == "digraph plugins {"
        && lines.takeLast().isEmpty() && lines.takeLast() == "}"
        && lines.takeFirst() == "  rankdir=BT;" && lines.takeFirst() == "  node [shape=box];";
    for (const QString& line : qAsConst(lines)) {
        if (const auto match = edge.match(line); match.hasMatch()) {
            const auto values = attributes(match.captured(3));
            graph.edges << QStringLiteral("%1 -> %2: %3%4%5")
                               .arg(unquoted(match.captured(1)), unquoted(match.captured(2)),
                                    values.value("label"),
                                    values.value("style") == "dashed" ? " dashed" : "",
                                    values.contains("color") ? " " + values.value("color") : "");
        } else if (const auto match = node.match(line); match.hasMatch()) {
            const auto values = attributes(match.captured(2));
            graph.nodes << QStringLiteral("%1: %2%3")
                               .arg(unquoted(match.captured(1)), values.value("label"),
                                    values.value("color") == "red" ? " [red]" : "");
        } else {
            graph.wellFormed = false;
        }
    }
    return graph;
}

} // namespace

// Runs the installed-to-be corvane-plugins program on real test plug-ins, with configurations
// written into a temporary folder.
class tst_PluginsTool : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(folder.isValid()); }
    void order_data();
    void order();
    void failures_data();
    void failures();
    void graph_data();
    void graph();
    void svg();
    void applicationFolder();

private:
    Result run(const QStringList& arguments, const QProcessEnvironment& environment = {});
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

Result tst_PluginsTool::run(const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess tool;
    tool.setWorkingDirectory(folder.path());
    QProcessEnvironment processEnvironment = QProcessEnvironment::systemEnvironment();
    processEnvironment.insert(environment);
    tool.setProcessEnvironment(processEnvironment);
    tool.start(QStringLiteral(CORVANE_PLUGINS_PROGRAM), arguments);
    const qint64 pid = tool.waitForStarted(30000) ? tool.processId() : 0;
    if (!tool.waitForFinished(60000) || tool.exitStatus() != QProcess::NormalExit) {
        tool.kill();
        tool.waitForFinished(30000);
        return {-1, QString(), QStringLiteral("crashed or hung: ") + tool.readAllStandardError()};
    }
    if (pid == 0 || ::kill(pid_t(pid), 0) == 0) {
        return {-1, QString(), QStringLiteral("still running")};
    }
    return {tool.exitCode(), QString::fromUtf8(tool.readAllStandardOutput()),
            QString::fromUtf8(tool.readAllStandardError())};
}

void tst_PluginsTool::order_data()
{
    QTest::addColumn<QStringList>("libraries");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("report"); // "%F" stands for the plug-ins' folder

    // Pass 1 orders, in name order, what needs nothing that is missing (an optional service
    // nobody provides does not count); the next passes what the earlier ones provide.
    QTest::newRow("three passes") << QStringList {"Alpha",   "PluginA", "Optional",
                                                  "Chained", "PluginC", "PluginB"}
                                  << 0
                                  << "Start order of app.xml (plug-ins from %F):\n"
                                     "  1  Optional 0.12.0  pass 1\n"
                                     "       requires: Nobody (optional, provided by nobody)\n"
                                     "  2  PluginB 0.12.0   pass 1\n"
                                     "       provides: S1\n"
                                     "  3  PluginC 0.12.0   pass 1\n"
                                     "  4  Chained 0.12.0   pass 2\n"
                                     "       provides: S2\n"
                                     "       requires: S1\n"
                                     "  5  PluginA 0.12.0   pass 2\n"
                                     "       requires: S1\n"
                                     "  6  Alpha 0.12.0     pass 3\n"
                                     "       requires: S2, S1 (optional)\n"
                                     "6 of 6 plug-ins can be ordered, in 3 passes.\n";
    QTest::newRow("missing provider") << QStringList {"PluginA", "PluginD", "PluginC"} << 1
                                      << "Start order of app.xml (plug-ins from %F):\n"
                                         "  1  PluginC 0.12.0  pass 1\n"
                                         "Not ordered:\n"
                                         "  -  PluginA 0.12.0\n"
                                         "       requires: S1\n"
                                         "  -  PluginD 0.12.0\n"
                                         "       provides: S1\n"
                                         "       requires: Missing\n"
                                         "Why:\n"
                                         "  PluginA is missing: S1 (provided by PluginD)\n"
                                         "  PluginD is missing: Missing (provided by nobody)\n"
                                         "2 of 3 plug-ins cannot be ordered: PluginA, PluginD.\n";
    QTest::newRow("cycle") << QStringList {"MutualY", "PrintOnly", "MutualX", "PluginC"} << 1
                           << "Start order of app.xml (plug-ins from %F):\n"
                              "  1  PluginC 0.12.0    pass 1\n"
                              "  2  PrintOnly 0.12.0  pass 1\n"
                              "       tasks: Print (not started with the application)\n"
                              "Not ordered:\n"
                              "  -  MutualX 0.12.0\n"
                              "       provides: SX\n"
                              "       requires: SY\n"
                              "  -  MutualY 0.12.0\n"
                              "       provides: SY\n"
                              "       requires: SX\n"
                              "Why:\n"
                              "  MutualX is missing: SY (provided by MutualY)\n"
                              "  MutualY is missing: SX (provided by MutualX)\n"
                              "  cycle: MutualX -> SY -> MutualY -> SX -> MutualX\n"
                              "2 of 4 plug-ins cannot be ordered: MutualX, MutualY.\n";
    QTest::newRow("no plug-ins") << QStringList() << 0
                                 << "Start order of app.xml (plug-ins from %F):\n"
                                    "No plug-ins configured.\n";
}

void tst_PluginsTool::order()
{
    QFETCH(QStringList, libraries);
    QFETCH(int, exitCode);
    QFETCH(QString, report);
    writeFile(path("app.xml"), configurationOf(libraries));
    const Result result = run({"order", "app.xml", "--folder", pluginFolder});
    QCOMPARE(result.out, report.replace("%F", pluginFolder));
    QCOMPARE(result.err, QString()); // the library's and the plug-ins' log lines stay off
    QCOMPARE(result.exitCode, exitCode);
}

void tst_PluginsTool::failures_data()
{
    QTest::addColumn<QByteArray>("configuration"); // written to app.xml
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("err"); // a regular expression for standard error

    const QByteArray valid = configurationOf({"PluginC"});
    const QString usage = "\nUsage: .*corvane-plugins \\[options\\] command configuration\n";
    QTest::newRow("broken configuration")
        << QByteArray("<config><plugins>") << QStringList {"order", "app.xml"} << 3
        << "^Error: Config file '.*/app\\.xml' is not an XML Document\\. Error '[^']+' detect at "
           "line \\d+, column \\d+\\.\n$";
    QTest::newRow("missing configuration") << valid << QStringList {"graph", "nope.xml"} << 3
                                           << "^Error: Cannot open config file: /.*/nope\\.xml\n$";
    QTest::newRow("wrong root element")
        << QByteArray("<configuration/>") << QStringList {"order", "app.xml"} << 3
        << "^Error: Config file does not contain correct XML tag \\(.*app\\.xml\\)\\.\n$";
    QTest::newRow("missing library")
        << configurationOf({"PluginC", "Absent"})
        << QStringList {"order", "app.xml", "--folder", pluginFolder} << 1
        << "^corvane-plugins: Failed to load plugin \\(Absent\\.dll\\)\\. .+\n$";
    QTest::newRow("no arguments") << valid << QStringList() << 2
                                  << "^corvane-plugins: expected a command \\(order or graph\\) "
                                     "and a configuration"
            + usage;
    QTest::newRow("unknown command")
        << valid << QStringList {"start", "app.xml"} << 2
        << "^corvane-plugins: expected a command \\(order or graph\\) and a configuration" + usage;
    QTest::newRow("--svg without graph")
        << valid << QStringList {"order", "--svg", "x.svg", "app.xml"} << 2
        << "^corvane-plugins: --svg belongs to the graph command" + usage;
    QTest::newRow("unknown option") << valid << QStringList {"order", "--fast", "app.xml"} << 2
                                    << "^corvane-plugins: Unknown option 'fast'\\." + usage;
    QTest::newRow("folder without application")
        << valid << QStringList {"order", "."} << 3
        << "^corvane-plugins: no application in '\\.' \\(an executable with <its name>\\.xml "
           "beside it\\)\n$";
}

void tst_PluginsTool::failures()
{
    QFETCH(QByteArray, configuration);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, err);
    writeFile(path("app.xml"), configuration);
    const Result result = run(arguments);
    QVERIFY2(QRegularExpression(err).match(result.err).hasMatch(), qPrintable(result.err));
    QCOMPARE(result.out, QString());
    QCOMPARE(result.exitCode, exitCode);
}

void tst_PluginsTool::graph_data()
{
    QTest::addColumn<QStringList>("libraries");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("nodes"); // sorted
    QTest::addColumn<QStringList>("edges"); // sorted

    QTest::newRow("orders") << QStringList {"Alpha",   "PluginA", "Optional",
                                            "Chained", "PluginC", "PluginB"}
                            << 0
                            << QStringList {"Alpha: Alpha 0.12.0/pass 3",
                                            "Chained: Chained 0.12.0/pass 2",
                                            "Optional: Optional 0.12.0/pass 1",
                                            "PluginA: PluginA 0.12.0/pass 2",
                                            "PluginB: PluginB 0.12.0/pass 1",
                                            "PluginC: PluginC 0.12.0/pass 1",
                                            "missing: Nobody: Nobody/provided by nobody"}
                            << QStringList {"Alpha -> Chained: S2", "Alpha -> PluginB: S1 dashed",
                                            "Chained -> PluginB: S1",
                                            "Optional -> missing: Nobody: Nobody dashed gray",
                                            "PluginA -> PluginB: S1"};
    QTest::newRow("fails") << QStringList {"MutualX", "PluginA", "PluginC", "MutualY", "PluginD"}
                           << 1
                           << QStringList {"MutualX: MutualX 0.12.0/not ordered [red]",
                                           "MutualY: MutualY 0.12.0/not ordered [red]",
                                           "PluginA: PluginA 0.12.0/not ordered [red]",
                                           "PluginC: PluginC 0.12.0/pass 1",
                                           "PluginD: PluginD 0.12.0/not ordered [red]",
                                           "missing: Missing: Missing/provided by nobody [red]"}
                           << QStringList {"MutualX -> MutualY: SY red",
                                           "MutualY -> MutualX: SX red", "PluginA -> PluginD: S1",
                                           "PluginD -> missing: Missing: Missing red"};
}

void tst_PluginsTool::graph()
{
    QFETCH(QStringList, libraries);
    QFETCH(int, exitCode);
    QFETCH(QStringList, nodes);
    QFETCH(QStringList, edges);
    writeFile(path("app.xml"), configurationOf(libraries));
    const Result result = run({"graph", "app.xml", "--folder", pluginFolder});
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.err, QString());
    Graph graph = parseDot(result.out);
    QVERIFY2(graph.wellFormed, qPrintable(result.out));
    graph.nodes.sort();
    graph.edges.sort();
    QCOMPARE(graph.nodes, nodes);
    QCOMPARE(graph.edges, edges);
}

void tst_PluginsTool::svg()
{
    writeFile(path("app.xml"), configurationOf({"MutualX", "MutualY", "PluginC"}));
    const QStringList arguments {"graph", "app.xml", "--folder", pluginFolder, "--svg", "g.svg"};

    // Without Graphviz the tool says so and writes nothing.
    QTemporaryDir emptyPath;
    QProcessEnvironment noGraphviz;
    noGraphviz.insert("PATH", emptyPath.path());
    Result result = run(arguments, noGraphviz);
    QCOMPARE(result.exitCode, 4);
    QCOMPARE(result.err,
             "corvane-plugins: cannot write '" + path("g.svg")
                 + "': Graphviz's 'dot' is not installed (Debian package graphviz)\n");
    QCOMPARE(result.out, QString());
    QVERIFY(!QFile::exists(path("g.svg")));

    if (QStandardPaths::findExecutable("dot").isEmpty()) {
        QSKIP("Graphviz's dot is not installed");
    }
    result = run(arguments);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, "Wrote the service graph of app.xml to " + path("g.svg") + ".\n");
    QCOMPARE(result.exitCode, 1); // the cycle still keeps two plug-ins from starting
    const QByteArray svg = readFile(path("g.svg"));
    QVERIFY2(svg.startsWith("<?xml") && svg.contains("<svg"), svg.left(200).constData());
    QVERIFY(svg.contains(">MutualX 0.12.0</text>") && svg.contains(">PluginC 0.12.0</text>"));
    QCOMPARE(svg.count("stroke=\"red\""), 2 + 2 * 2); // two boxes, two arrows with their heads
}

// Given a folder, the tool takes the configuration of the application in it and loads the
// plug-ins from there.
void tst_PluginsTool::applicationFolder()
{
    QVERIFY(QDir(folder.path()).mkpath("app"));
    for (const QString& name : {"demo", "other"}) {
        writeFile(path("app/" + name), "#!/bin/sh\n");
        QVERIFY(QFile::setPermissions(path("app/" + name),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    writeFile(path("app/demo.xml"), configurationOf({"PluginC"}));
    writeFile(path("app/plugins.xml"), configurationOf({"PluginB"})); // no application's
    QVERIFY(QFile::copy(pluginFolder + "/libPluginC.so", path("app/libPluginC.so")));

    Result result = run({"order", "app"});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out,
             "Start order of app (plug-ins from " + path("app")
                 + "):\n"
                   "  1  PluginC 0.12.0  pass 1\n"
                   "1 of 1 plug-in can be ordered, in 1 pass.\n");
    QCOMPARE(result.exitCode, 0);

    writeFile(path("app/other.xml"), configurationOf({"PluginC"}));
    result = run({"order", "app"});
    QCOMPARE(result.err,
             "corvane-plugins: 'app' holds several applications (demo.xml, "
             "other.xml): name the configuration file\n");
    QCOMPARE(result.exitCode, 2);
}

QTEST_MAIN(tst_PluginsTool)
#include "tst_PluginsTool.moc"
