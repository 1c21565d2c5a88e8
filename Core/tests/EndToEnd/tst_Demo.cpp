#include "Processes.h"

// A copy of the demo application (executable, plug-ins, configurations, properties and data) in
// a temporary folder, run from elsewhere as a user would.
class tst_Demo : public QObject
{
    Q_OBJECT

private slots:
    void runs_data();
    void runs();
};

void tst_Demo::runs_data()
{
    QTest::addColumn<QString>("change"); // "-C <file>", "remove <file>" or "write <file> <text>"
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("out"); // a regular expression
    QTest::addColumn<QStringList>("log"); // regular expressions; none: no log written
    QTest::newRow("console")
        << "" << 0
        << "^Inventory report \\(inventory\\.csv\\)\nHost: (?!unknown)[^\n]+\n[\\s\\S]*"
           // the configured filter: price about 2 or more, then cables outside the first half-year
           "\nBrass hinge .*\nDrill bit 6 mm .*\nEspresso cups .*\nCopper wire \\(m\\) .*\nTotal "
           "+273 +344\\.85\n$"
        << QStringList {"----------------start of log file-{34}\n",
                        "init: Plugin ReportPlugin loaded in \\d+ ms, initialized in \\d+ ms",
                        "deinitPlugin: Plugin \"?ReportPlugin\"? deinitialized\\.",
                        "\"returnValue: 0\"", "----------------end of log file-{34}\n"};
    // The audit asks the report for JSON, through the serializer factory.
    QTest::newRow("optional consumer")
        << "-C corvane-demo-audit.xml" << 0
        << "^(?=[\\s\\S]*\nAudit: reorder Brass hinge \\(8 left\\)\nAudit: reorder Drill bit 6 mm "
           "\\(3 left\\)\n)[\\s\\S]*\\[\n    \\{\n        \"item\": \"Anchor bolt\","
        << QStringList {"end of log file"};
    QTest::newRow("gui") << "-C corvane-demo-gui.xml" << 0 << ""
                         << QStringList {"Start GUI application\\.",
                                         "initialize: inventory window shown",
                                         "deinitPlugin: Plugin \"?WindowPlugin\"? deinitialized\\.",
                                         "heartbeat 1\n", // 100 ms beats while the window is open
                                         "deinitialize: \\d+ heartbeats"};
    QTest::newRow("missing configuration") << "remove corvane-demo.xml" << 1
                                           << "^Error: Cannot open config file: .*/corvane-demo"
                                              "\\.xml$"
                                           << QStringList();
    QTest::newRow("nested 25,000 levels deep") // refused before it is parsed into a tree
        << "write corvane-demo.xml <config>" + QString("<n>").repeated(25000)
            + QString("</n>").repeated(25000) + "</config>"
        << 1 << "^Error: " << QStringList();
    // "check": the demo as a program that has the signature checked; "check sign" after
    // corvane-sign wrote the ".sig" file.
    QTest::newRow("signature checked, none written")
        << "check" << -2 << ""
        << QStringList {
               "initialize: Signature check for configuration file has found an error: "
               ".*/corvane-demo\\.xml",
               "main: Console application catched: [\\w:]+ConfigurationManager::initialize "
               "Signature check for configuration file has found an error: "
               ".*/corvane-demo\\.xml"};
    QTest::newRow("signature checked and right")
        << "check sign" << 0 << "^Inventory report" << QStringList {"\"returnValue: 0\""};
    QTest::newRow("no application type")
        << "write corvane-demo.xml <config><information/></config>" << 1 << "^$" << QStringList();
    QTest::newRow("missing plug-in library")
        << "remove libReport.so" << 1 << "^$"
        << QStringList {"Error during initialize of plugin\\.",
                        "Failed to load plugin \\(Report\\.dll\\)\\. ", "end of log file"};
}

void tst_Demo::runs()
{
    QFETCH(QString, change);
    QFETCH(int, exitCode);
    QFETCH(QString, out);
    QFETCH(QStringList, log);
    QTemporaryDir folder;
    QVERIFY(
        copyInto(folder.path(), DEMO_FOLDER,
                 {"corvane-demo", "libInventory.so", "libReport.so", "libAudit.so", "libWindow.so",
                  "libHeartbeat.so", "corvane-demo.xml", "corvane-demo-audit.xml",
                  "corvane-demo-gui.xml", "corvane-demo.properties", "inventory.csv"}));
    const QString target = folder.filePath(change.section(' ', 1, 1));
    if (change.startsWith("remove")) {
        QVERIFY(QFile::remove(target));
    } else if (change.startsWith("write")) {
        writeFile(target, change.section(' ', 2).toUtf8());
    }

    if (change.startsWith("check")) { // in the demo's place, so that it finds the same files
        QVERIFY(QFile::remove(folder.filePath("corvane-demo"))
                && QFile::copy(CHECKED_DEMO, folder.filePath("corvane-demo")));
    }
    if (change == "check sign") {
        QCOMPARE(run(SIGN_PROGRAM, {"sign", folder.filePath("corvane-demo.xml")}).exitCode, 0);
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", "1000"); // the window closes by itself
    const Run result
        = run(folder.filePath("corvane-demo"),
              change.startsWith("-C") ? change.split(' ') : QStringList(), environment);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(QRegularExpression(out).match(result.out).hasMatch(),
             qPrintable(result.out + "\nstandard error: " + result.err.left(500)));
    const QString written = readFile(folder.filePath("logs/corvane-demo.log"));
    QCOMPARE(written == "<missing>", log.isEmpty());
    for (const QString& expected : log) {
        QVERIFY2(written.contains(QRegularExpression(expected)), qPrintable(expected));
    }
}

QTEST_MAIN(tst_Demo)
#include "tst_Demo.moc"
