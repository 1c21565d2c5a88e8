#include "Processes.h"

// "corvane-plugins check" on broken and sound configuration files in a temporary folder that
// holds one real plug-in library; the schema judges the same files with libxml2's xmllint.
namespace {

Run check(const QStringList& arguments)
{
    return run(CORVANE_PLUGINS_PROGRAM, QStringList {"check"} + arguments);
}

// Exact lines; "…" stands for a text that the XML parser words itself.
bool matches(const QString& actual, const QString& expected)
{
    QStringList parts = expected.split(QStringLiteral("…"));
    for (QString& part : parts) {
        part = QRegularExpression::escape(part);
    }
    return QRegularExpression("^" + parts.join(".+") + "$").match(actual).hasMatch();
}

// A configuration whose information and plugins sections hold the given lines.
QByteArray configuration(const QByteArray& information, const QByteArray& plugins)
{
    return "<config>\n  <information>\n" + information + "  </information>\n  <plugins>\n"
        + plugins + "  </plugins>\n</config>\n";
}

const QByteArray consoleType = "    <applicationtype>CONSOLE</applicationtype>\n";
const QByteArray pluginC = "    <plugin><library>PluginC</library></plugin>\n";

} // namespace

class tst_ConfigurationCheck : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;

private slots:
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(folder.path()));
        QVERIFY(QFile::copy(TEST_PLUGIN_FOLDER "/libPluginC.so", "libPluginC.so"));
        QVERIFY2(!QStandardPaths::findExecutable("xmllint").isEmpty(),
                 "xmllint (Debian package libxml2-utils) checks the schema");
    }

    void reports_data()
    {
        QTest::addColumn<QByteArray>("text"); // written to app.xml
        QTest::addColumn<QString>("report");  // %F: the folder
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<bool>("schemaValid"); // as the schema judges the file
        const QString one = "app.xml: 1 problem found.\n";
        QTest::newRow("sound") << configuration(consoleType, pluginC)
                               << "app.xml: no problems found.\n" << 0 << true;
        // Names as the application compares them: sections in any case, <library> exactly.
        QTest::newRow("sections in other cases")
            << QByteArray("<CONFIG><Information><ApplicationType>console</ApplicationType>"
                          "</Information>\n<PLUGINS><Plugin><library>PluginC</library></Plugin>"
                          "</PLUGINS></CONFIG>\n")
            << "app.xml: no problems found.\n" << 0 << false;
        QTest::newRow("misspelled library")
            << configuration(consoleType, "    <plugin><libary>PluginC</libary></plugin>\n")
            << "app.xml:6:5: <plugin> without <library>: the application cannot load it\n"
               "app.xml:6:13: unknown element <libary> in <plugin>: the application ignores it\n"
               "app.xml: 2 problems found.\n"
            << 1 << false;
        QTest::newRow("library in another case")
            << configuration(consoleType, "    <plugin>\n      <Library>PluginC</Library>\n"
                                          "    </plugin>\n")
            << "app.xml:6:5: <plugin> without <library>: the application cannot load it\n"
               "app.xml:7:7: unknown element <Library> in <plugin>: the application ignores it\n"
               "app.xml: 2 problems found.\n"
            << 1 << false;
        QTest::newRow("unknown elements and attributes")
            << "<config>\n  <logging/>\n  <information>\n" + consoleType
                + "    <author>me</author>\n  </information>\n  <plugins order=\"fast\">\n"
                + pluginC + "  </plugins>\n  <service><watchdog>5</watchdog></service>\n</config>\n"
            << "app.xml:2:3: unknown element <logging> in <config>: the application ignores it\n"
               "app.xml:5:5: unknown element <author> in <information>: the application ignores "
               "it\n"
               "app.xml:7:3: unknown attribute 'order' on <plugins>: the application ignores it\n"
               "app.xml:10:12: unknown element <watchdog> in <service>: the application ignores "
               "it\n"
               "app.xml: 4 problems found.\n"
            << 1 << false;
        QTest::newRow("application type no start accepts")
            << configuration("    <applicationtype>CONSOL</applicationtype>\n", pluginC)
            << "app.xml:3:5: application type 'CONSOL' is none of GUI, CONSOLE, SERVICE: the "
               "application does not start\n" + one
            << 1 << false;
        QTest::newRow("application type with spaces")
            << configuration("    <applicationtype> GUI </applicationtype>\n", pluginC)
            << "app.xml:3:5: application type ' GUI ' is none of GUI, CONSOLE, SERVICE: the "
               "application does not start\n" + one
            << 1 << false;
        QTest::newRow("no application type")
            << configuration("", pluginC)
            << "app.xml:1:1: no <applicationtype> in <information>: the application does not "
               "start (give GUI, CONSOLE or SERVICE)\n" + one
            << 1 << true;
        QTest::newRow("no plugins section")
            << QByteArray("<config>\n  <information>\n" + consoleType + "  </information>\n</config>\n")
            << "app.xml:1:1: no <plugins>: the application has no plug-in to start\n" + one << 1
            << true;
        QTest::newRow("empty plugins section")
            << configuration(consoleType, "")
            << "app.xml:5:3: <plugins> holds no <plugin>: the application has no plug-in to "
               "start\n" + one
            << 1 << false;
        QTest::newRow("library not in the folder")
            << configuration(consoleType, pluginC + "    <plugin><library>libAbsent.so</library>"
                                                    "</plugin>\n")
            << "app.xml:7:13: plug-in library 'libAbsent.so' is not in the application's folder "
               "(no libAbsent.so in %F)\n" + one
            << 1 << true;
        QTest::newRow("empty library")
            << configuration(consoleType, "    <plugin><library/></plugin>\n")
            << "app.xml:6:13: <library> is empty: the application cannot load it\n" + one << 1
            << false;
        QTest::newRow("environment references")
            << configuration("    <applicationname>${USER}</applicationname>\n" + consoleType,
                             "    <plugin><library>PluginC</library><configuration>\n"
                             "      <file>${CORVANE_CHECK_UNSET}/${HOME}/a</file>\n"
                             "    </configuration></plugin>\n")
            << "app.xml:3:5: ${USER} is not expanded: the application takes <applicationname> "
               "as written\n"
               "app.xml:8:7: ${CORVANE_CHECK_UNSET} refers to an environment variable that is "
               "not set\n"
               "app.xml: 2 problems found.\n"
            << 1 << true;
        QTest::newRow("values read as something else")
            << configuration(consoleType + "    <releasedate>21.11.2026</releasedate>\n"
                                           "    <singleappusernotification>yes"
                                           "</singleappusernotification>\n",
                             pluginC)
            << "app.xml:4:5: release date '21.11.2026' is not a date as year-month-day: it is "
               "read as none\n"
               "app.xml:5:5: 'yes' is neither true nor false: it is read as false\n"
               "app.xml: 2 problems found.\n"
            << 1 << false;
        QTest::newRow("not well-formed")
            << QByteArray("<config>\n  <information>\n</config>\n")
            << "app.xml:3:…: not well-formed XML: …: the application does not start\n" + one
            << 1 << false;
        QTest::newRow("wrong root element")
            << QByteArray("<?xml version=\"1.0\"?>\n<!-- app -->\n  <configuration/>\n")
            << "app.xml:3:3: the root element is <configuration>, not <config>: the "
               "application does not start\n" + one
            << 1 << false;
        QTest::newRow("schema linked")
            << QByteArray("<config xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"\n"
                          "        xsi:noNamespaceSchemaLocation=\"corvane-configuration.xsd\">\n"
                          "  <information>\n" + consoleType + "  </information>\n"
                          "  <plugins>\n" + pluginC + "  </plugins>\n"
                          "  <service><watchdogsec>ten</watchdogsec></service>\n</config>\n")
            << "app.xml:9:12: watchdog seconds 'ten' is not a whole number: the service gets no "
               "watchdog\n" + one
            << 1 << false;
    }
    void reports()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, report);
        QFETCH(int, exitCode);
        QFETCH(bool, schemaValid);
        writeFile("app.xml", text);
        const Run result = check({"app.xml"});
        QVERIFY2(matches(result.out, report.replace("%F", folder.path())), qPrintable(result.out));
        QCOMPARE(result.err, QString());
        QCOMPARE(result.exitCode, exitCode);
        const Run schema = run("xmllint", {"--noout", "--schema", CORVANE_SCHEMA, "app.xml"});
        QVERIFY2((schema.exitCode == 0) == schemaValid, qPrintable(schema.err));
    }

    // Each of the demo's configurations, beside its plug-ins, as the schema wants it.
    void demoIsClean_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"corvane-demo.xml", "corvane-demo-gui.xml",
                                 "corvane-demo-audit.xml", "corvane-demo-service.xml"}) {
            QTest::newRow(name) << name;
        }
    }
    void demoIsClean()
    {
        QFETCH(QString, name);
        const QString path = QStringLiteral(DEMO_FOLDER "/") + name;
        const Run result = check({path});
        QCOMPARE(result.outcome() + result.err, "0 " + path + ": no problems found.\n");
        const Run schema = run("xmllint", {"--noout", "--schema", CORVANE_SCHEMA, path});
        QVERIFY2(schema.exitCode == 0, qPrintable(schema.err));
    }

    // What check calls sound starts; what it finds fault with does not.
    void startsWhenSound_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("checkCode");
        QTest::addColumn<int>("startCode");
        const QByteArray plugins = "    <plugin><library>Inventory</library><configuration>"
                                   "<file>inventory.csv</file></configuration></plugin>\n"
                                   "    <plugin><library>libReport.so</library></plugin>\n";
        QTest::newRow("sound") << configuration(consoleType, plugins) << 0 << 0;
        QTest::newRow("type misspelled")
            << configuration("    <applicationtype>CONSOL</applicationtype>\n", plugins) << 1 << 1;
        QTest::newRow("library misspelled")
            << configuration(consoleType, plugins + "    <plugin><library>Reprot</library>"
                                                    "</plugin>\n")
            << 1 << 1;
    }
    void startsWhenSound()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, checkCode);
        QFETCH(int, startCode);
        QTemporaryDir application;
        QVERIFY(copyInto(application.path(), DEMO_FOLDER,
                         {"corvane-demo", "libInventory.so", "libReport.so", "inventory.csv",
                          "corvane-demo.properties"}));
        const QString configuration = application.filePath("corvane-demo.xml");
        writeFile(configuration, text);
        const Run checked = check({configuration});
        QCOMPARE(checked.exitCode, checkCode);
        const Run started = run(application.filePath("corvane-demo"), {});
        QCOMPARE(started.exitCode, startCode);
    }
};

QTEST_MAIN(tst_ConfigurationCheck)
#include "tst_ConfigurationCheck.moc"
