#include "TestFiles.h"

#include <QtTest>

// Runs a copy of the demo application (executable, plug-ins, configurations, properties and
// data) from a temporary folder, as a user would.
class tst_Demo : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void console();
    void failures_data();
    void failures();
    void optionalConsumer();
    void gui();

private:
    struct Run
    {
        int exitCode = -1;
        QString out;
        QString err;
        QString log;
    };
    Run run(const QStringList& arguments, const QProcessEnvironment& environment = {});
    QString path(const QString& name) const { return folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> folder;
};

void tst_Demo::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file :
         {"corvane-demo", "libInventory.so", "libReport.so", "libAudit.so", "libWindow.so",
          "libHeartbeat.so", "corvane-demo.xml", "corvane-demo-audit.xml", "corvane-demo-gui.xml",
          "corvane-demo.properties", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), path(file)), qPrintable(file));
    }
}

tst_Demo::Run tst_Demo::run(const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess demo;
    demo.setWorkingDirectory(QDir::tempPath()); // the application finds its files by itself
    QProcessEnvironment processEnvironment = QProcessEnvironment::systemEnvironment();
    processEnvironment.insert(environment);
    demo.setProcessEnvironment(processEnvironment);
    demo.start(path("corvane-demo"), arguments);
    Run result;
    if (!demo.waitForFinished(120000)) {
        demo.kill();
        demo.waitForFinished();
        result.out = QStringLiteral("<hung>");
        return result;
    }
    if (demo.exitStatus() == QProcess::NormalExit) {
        result.exitCode = demo.exitCode();
    }
    result.out = QString::fromUtf8(demo.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(demo.readAllStandardError());
    result.log = QString::fromUtf8(readFile(path("logs/corvane-demo.log")));
    return result;
}

void tst_Demo::console()
{
    const Run result = run({});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.startsWith("Inventory report (inventory.csv)\nHost: "),
             qPrintable(result.out));
    QVERIFY(!result.out.contains("Host: unknown"));
    // The configured filter: price about 2 or more, then cables outside the first half-year.
    QVERIFY2(result.out.contains(QRegularExpression(
                 "\nBrass hinge .*\nDrill bit 6 mm .*\nEspresso cups .*\nCopper wire \\(m\\) .*\n"
                 "Total +273 +344\\.85\n$")),
             qPrintable(result.out));
    QVERIFY(
        result.log.contains("----------------start of log file----------------------------------"));
    QVERIFY(
        result.log.contains("----------------end of log file----------------------------------"));
    QVERIFY(result.log.contains(QRegularExpression("init: Plugin ReportPlugin loaded in \\d+ ms, "
                                                   "initialized in \\d+ ms")));
    QVERIFY(result.log.contains(
        QRegularExpression(R"(deinitPlugin: Plugin "?ReportPlugin"? deinitialized\.)")));
    QVERIFY(result.log.contains("\"returnValue: 0\""));
}

void tst_Demo::failures_data()
{
    // What is done to the copied application: "remove <file>", "write <file> <content>" or
    // "nest <file> <depth>" (a configuration of elements nested that deep).
    QTest::addColumn<QString>("change");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("out"); // a regular expression for standard output
    QTest::addColumn<QString>("logged"); // text the log must contain, empty: no log expected

    QTest::newRow("missing configuration")
        << "remove corvane-demo.xml" << 1
        << "^Error: Cannot open config file: .*/corvane-demo\\.xml$"
        << "";
    QTest::newRow("malformed configuration")
        << "write corvane-demo.xml <config><plugins>" << 1
        << "^Error: Config file '.*' is not an XML Document\\. Error '.*' detect at line 1, column "
           "\\d+\\.$"
        << "";
    QTest::newRow("nested 25,000 levels deep") // refused before it is parsed into a tree
        << "nest corvane-demo.xml 25000" << 1 << "^Error: "
        << "";
    QTest::newRow("no application type")
        << "write corvane-demo.xml <config><information/></config>" << 1 << "^$"
        << "";
    QTest::newRow("missing plug-in library") << "remove libReport.so" << 1 << "^$"
                                             << "Failed to load plugin (Report.dll). ";
    QTest::newRow("plug-in whose initialize throws")
        << "remove inventory.csv" << 1 << "^$"
        << "Failed to initialize plugin (InventoryPlugin): corvane::demo::InventoryService::"
           "initialize Cannot read the inventory inventory.csv";
}

void tst_Demo::failures()
{
    QFETCH(QString, change);
    QFETCH(int, exitCode);
    QFETCH(QString, out);
    QFETCH(QString, logged);
    const QString target = change.section(' ', 1, 1);
    if (change.startsWith("remove")) {
        QVERIFY(QFile::remove(path(target)));
    } else if (change.startsWith("nest")) {
        const int depth = change.section(' ', 2).toInt();
        writeFile(path(target),
                  "<config>" + QByteArray("<n>").repeated(depth)
                      + QByteArray("</n>").repeated(depth) + "</config>");
    } else {
        writeFile(path(target), change.section(' ', 2).toUtf8());
    }

    const Run result = run({});
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(
        QRegularExpression(out).match(result.out).hasMatch(),
        qPrintable("standard output: " + result.out + "\nstandard error: " + result.err.left(500)));
    if (logged.isEmpty()) {
        QVERIFY(!QFile::exists(path("logs/corvane-demo.log")));
    } else {
        QVERIFY2(result.log.contains(logged), qPrintable(result.log));
        QVERIFY(result.log.contains("Error during initialize of plugin."));
        QVERIFY(result.log.contains("----------------end of log file"));
    }
}

void tst_Demo::optionalConsumer()
{
    const Run result = run({"-C", "corvane-demo-audit.xml"});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.contains(
        "Audit: reorder Brass hinge (8 left)\nAudit: reorder Drill bit 6 mm (3 left)\n"));
    // This configuration asks the report for JSON, through the serializer factory.
    QVERIFY2(result.out.contains("[\n    {\n        \"item\": \"Anchor bolt\","),
             qPrintable(result.out));
}

void tst_Demo::gui()
{
    QProcessEnvironment environment;
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", "1000");
    const Run result = run({"-C", "corvane-demo-gui.xml"}, environment);
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.log.contains("Start GUI application."));
    QVERIFY(result.log.contains("initialize: inventory window shown"));
    QVERIFY(result.log.contains(
        QRegularExpression(R"(deinitPlugin: Plugin "?WindowPlugin"? deinitialized\.)")));
    QVERIFY(result.log.contains("heartbeat 1")); // 100 ms beats while the window is open
    QVERIFY(result.log.contains(QRegularExpression("deinitialize: \\d+ heartbeats")));
}

QTEST_MAIN(tst_Demo)
#include "tst_Demo.moc"
