#include "TestFiles.h"

#include <QtTest>

#include <csignal>

// The demo's service executable, copied into a temporary folder with a service name of its
// own and a unit folder of its own (CORVANE_SYSTEMD_UNIT_DIR).
class tst_Service : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void usage_data();
    void usage();
    void lifecycle();
    void refusedNames_data();
    void refusedNames();
    void sigtermEndsAForegroundRun();

private:
    struct Run
    {
        int exitCode = -1;
        QString out;
        QString err;
    };
    Run run(const QStringList& arguments, const QString& program = {});
    QString path(const QString& name) const { return folder.filePath(name); }
    QString log() const
    {
        return QString::fromUtf8(readFile(folder.filePath("logs/corvane-demo-service.log")));
    }
    void writeConfiguration(const QString& serviceName);

    QTemporaryDir folder;
    QString name;
};

void tst_Service::initTestCase()
{
    QVERIFY(folder.isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file : {"corvane-demo-service", "libInventory.so", "libHeartbeat.so",
                                "corvane-demo-service.properties", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), path(file)), qPrintable(file));
    }
    name = QStringLiteral("tst-service-%1").arg(QCoreApplication::applicationPid());
    writeConfiguration(name);
}

void tst_Service::writeConfiguration(const QString& serviceName)
{
    QString xml = QStringLiteral(
        "<config><information><applicationname>%1</applicationname>"
        "<applicationtype>SERVICE</applicationtype></information><plugins>"
        "<plugin><library>Inventory</library></plugin><plugin><library>Heartbeat</library>"
        "<configuration><intervalMs>100</intervalMs></configuration></plugin>"
        "</plugins></config>");
    writeFile(path("corvane-demo-service.xml"), xml.arg(serviceName.toHtmlEscaped()).toUtf8());
}

void tst_Service::cleanup()
{
    run({"-t"}); // whatever a failed test left running
    writeConfiguration(name);
}

tst_Service::Run tst_Service::run(const QStringList& arguments, const QString& program)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVANE_SYSTEMD_UNIT_DIR", path("units"));
    process.setProcessEnvironment(environment);
    process.start(program.isEmpty() ? path("corvane-demo-service") : program, arguments);
    Run result;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(process.readAllStandardError());
    return result;
}

void tst_Service::usage_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("-h") << "-h" << 0;
    QTest::newRow("-help") << "-help" << 0;
    QTest::newRow("unknown switch") << "-x" << 1;
}

void tst_Service::usage()
{
    QFETCH(QString, argument);
    QFETCH(int, exitCode);
    const Run result = run({argument});
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.out,
             "\n" + path("corvane-demo-service")
                 + " -[i|u|e|s|v|h]\n"
                   "\t-i(nstall) [account] [password]\t: Install the service, optionally using "
                   "given account and password\n"
                   "\t-u(ninstall)\t: Uninstall the service.\n"
                   "\t-e(xec)\t\t: Run as a regular application. Useful for debugging.\n"
                   "\t-t(erminate)\t: Stop the service.\n"
                   "\t-c(ommand) num\t: Send command code num to the service.\n"
                   "\t-v(ersion)\t: Print version and status information.\n"
                   "\t-h(elp)   \t: Show this help\n"
                   "\tNo arguments\t: Start the service.\n\n");
}

void tst_Service::lifecycle()
{
    const QString unit = path("units/" + name + ".service");
    Run result = run({"-i", "someone", "secret"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, "The service " + name + " has been installed under: " + unit + "\n");
    const QByteArray written = readFile(unit);
    QVERIFY(
        written.contains("Type=notify\nExecStart=" + path("corvane-demo-service").toUtf8() + "\n"));
    QVERIFY(written.contains("\nUser=someone\n"));
    QVERIFY(!written.contains("secret"));
    const QString analyze = QStandardPaths::findExecutable("systemd-analyze");
    if (!analyze.isEmpty()) {
        QProcess verify;
        verify.start(analyze, {"verify", unit});
        QVERIFY(verify.waitForFinished(60000));
        QCOMPARE(verify.exitCode(), 0);
        QCOMPARE(QString::fromLocal8Bit(verify.readAllStandardError()), QString());
    }

    result = run({"-install"});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, "The service " + name + " is already installed\n");
    QCOMPARE(readFile(unit), written);

    result = run({"-v"});
    QVERIFY2(result.out.endsWith("is installedand not running\n\n"), qPrintable(result.out));

    result = run({});
    QCOMPARE(result.exitCode, 0); // the daemon answers on its control socket
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("heartbeat 1"), 30000);
    QVERIFY(run({"-v"}).out.endsWith("is installedand running\n\n"));

    QCOMPARE(run({"-p"}).exitCode, 0);
    QCOMPARE(run({"-r"}).exitCode, 0);
    QCOMPARE(run({"-c", "7"}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("heartbeat: command 7 received"), 30000);
    QVERIFY(log().contains("heartbeat paused"));
    QVERIFY(log().contains("heartbeat resumed"));

    QCOMPARE(run({"-t"}).exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("deinitPlugin: Plugin HeartbeatPlugin deinitialized."),
                             30000);
    QTRY_VERIFY_WITH_TIMEOUT(run({"-v"}).out.endsWith("is installedand not running\n\n"), 30000);

    result = run({"-t"});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, QStringLiteral("The service could not be stopped."));

    result = run({"-u"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, "The service " + name + " has been uninstalled.\n");
    QVERIFY(!QFile::exists(unit));
    result = run({"-uninstall"});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.out, "The service " + name + " is not installed\n");
}

void tst_Service::refusedNames_data()
{
    QTest::addColumn<QString>("serviceName");
    QTest::addColumn<QString>("warning");
    const QString longName(256, QLatin1Char('n'));
    QTest::newRow("256 characters")
        << longName << "ServiceController: '" + longName + "' is longer than 255 characters.\n";
    QTest::newRow("backslash") << "a\\b"
                               << "ServiceController: 'a\\b' contains backslashes '\\'.\n";
}

void tst_Service::refusedNames()
{
    QFETCH(QString, serviceName);
    QFETCH(QString, warning);
    writeConfiguration(serviceName);
    const Run result = run({"-i"});
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.err.contains(warning), qPrintable(result.err));
    QCOMPARE(result.out, QString());
}

void tst_Service::sigtermEndsAForegroundRun()
{
    QProcess foreground;
    foreground.start(path("corvane-demo-service"), {"-e"});
    QTRY_VERIFY_WITH_TIMEOUT(log().count("slotStart: service started") >= 1
                                 && run({"-v"}).out.contains("and running"),
                             30000);
    const int deinitializedBefore = log().count("Plugin HeartbeatPlugin deinitialized.");
    foreground.terminate(); // SIGTERM, as systemd sends it
    QVERIFY(foreground.waitForFinished(60000));
    QCOMPARE(foreground.exitStatus(), QProcess::NormalExit);
    QCOMPARE(foreground.exitCode(), 0);
    QCOMPARE(log().count("Plugin HeartbeatPlugin deinitialized."), deinitializedBefore + 1);
}

QTEST_MAIN(tst_Service)
#include "tst_Service.moc"
