#include "Processes.h"
#include "TestFiles.h"

#include <QtTest>

#include <signal.h>

namespace {
const QRegularExpression
    heartbeatDeinitialized(R"(deinitPlugin: Plugin "?HeartbeatPlugin"? deinitialized\.)");
} // namespace

// The demo's service executable, copied into a temporary folder with a service name of its
// own and a unit folder of its own (CORVANE_SYSTEMD_UNIT_DIR).
class tst_Service : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    void usage_data();
    void usage();
    void lifecycle();
    void refusedNames_data();
    void refusedNames();
    void sigtermEndsAForegroundRun();
    void stoppedDaemonIsGone_data();
    void stoppedDaemonIsGone();
    void daemonThatCannotStartIsReported();
    void sighupKeepsTheFileLog();

private:
    struct Run
    {
        int exitCode = -1;
        QString out;
        QString err;
    };
    Run run(const QStringList& arguments, int timeoutMs = 120000);
    QString path(const QString& name) const { return folder.filePath(name); }
    QString log() const
    {
        return QString::fromUtf8(readFile(folder.filePath("logs/corvane-demo-service.log")));
    }
    void writeConfiguration(const QString& serviceName, const QString& plugins = {});

    QTemporaryDir folder;
    QString name;
};

void tst_Service::initTestCase()
{
    QVERIFY(adoptOrphans()); // the daemons, so that their end can be seen
    QVERIFY(folder.isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file : {"corvane-demo-service", "libInventory.so", "libHeartbeat.so",
                                "corvane-demo-service.properties", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), path(file)), qPrintable(file));
    }
    name = QStringLiteral("tst-service-%1").arg(QCoreApplication::applicationPid());
    writeConfiguration(name);
}

void tst_Service::writeConfiguration(const QString& serviceName, const QString& plugins)
{
    QString xml = QStringLiteral(
        "<config><information><applicationname>%1</applicationname>"
        "<applicationtype>SERVICE</applicationtype></information><plugins>%2</plugins></config>");
    writeFile(path("corvane-demo-service.xml"),
              xml.arg(serviceName.toHtmlEscaped(),
                      plugins.isEmpty() ? "<plugin><library>Inventory</library></plugin>"
                                          "<plugin><library>Heartbeat</library><configuration>"
                                          "<intervalMs>100</intervalMs></configuration></plugin>"
                                        : plugins)
                  .toUtf8());
}

// Whatever of this folder's executable still runs was started here.
void tst_Service::cleanupTestCase()
{
    QVERIFY(killProcessesOf(path("corvane-demo-service")));
}

void tst_Service::cleanup()
{
    run({"-t"}, 30000); // whatever a failed test left running, then whatever did not stop
    QVERIFY(killProcessesOf(path("corvane-demo-service")));
    writeConfiguration(name);
    QFile::remove(path("corvane-demo-service.properties"));
    QVERIFY(
        QFile::copy(QDir(QStringLiteral(DEMO_FOLDER)).filePath("corvane-demo-service.properties"),
                    path("corvane-demo-service.properties")));
}

tst_Service::Run tst_Service::run(const QStringList& arguments, int timeoutMs)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVANE_SYSTEMD_UNIT_DIR", path("units"));
    environment.remove("QT_MESSAGE_PATTERN"); // Qt's default handler writes the bare text
    // Without systemd's socket the service starts as a daemon of its own.
    environment.remove("NOTIFY_SOCKET");
    process.setProcessEnvironment(environment);
    process.start(path("corvane-demo-service"), arguments);
    Run result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        result.out = QStringLiteral("<still running after %1 ms>").arg(timeoutMs);
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
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(heartbeatDeinitialized), 30000);
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
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("serviceName");
    QTest::addColumn<QString>("warning");
    for (const QStringList& arguments : {QStringList {"-i"}, {"-t"}, {"-e"}, {}}) {
        const QByteArray action = arguments.isEmpty() ? "no argument" : arguments[0].toLatin1();
        QTest::addRow("%s, 256 characters", action.data())
            << arguments << QString(256, QLatin1Char('n'))
            << "ServiceController: 'name' is longer than 255 characters.";
        QTest::addRow("%s, backslash", action.data())
            << arguments << "a\\b"
            << "ServiceController: 'name' contains backslashes '\\'.";
    }
}

void tst_Service::refusedNames()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, serviceName);
    QFETCH(QString, warning);
    writeConfiguration(serviceName);
    const QList<qint64> before = processesOf(path("corvane-demo-service"));
    const auto started = [&] {
        QList<qint64> pids = processesOf(path("corvane-demo-service"));
        for (qint64 pid : before) {
            pids.removeAll(pid);
        }
        return pids;
    };
    const Run result = run(arguments, 30000);
    static_cast<void>(QTest::qWaitFor([&] { return started().isEmpty(); }, 5000));
    const QList<qint64> left = started();
    for (qint64 pid : left) {
        ::kill(pid_t(pid), SIGKILL);
    }
    QVERIFY(QTest::qWaitFor([&] { return started().isEmpty(); }, 10000));
    QVERIFY2(left.isEmpty(), "a process of the service was left running");
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.err.split('\n').contains(warning), qPrintable(result.err));
    QCOMPARE(result.out, QString());
}

void tst_Service::sigtermEndsAForegroundRun()
{
    QProcess foreground;
    foreground.start(path("corvane-demo-service"), {"-e"});
    QTRY_VERIFY_WITH_TIMEOUT(log().count("slotStart: service started") >= 1
                                 && run({"-v"}).out.contains("and running"),
                             30000);
    const int deinitializedBefore = log().count(heartbeatDeinitialized);
    foreground.terminate(); // SIGTERM, as systemd sends it
    QVERIFY(foreground.waitForFinished(60000));
    QCOMPARE(foreground.exitStatus(), QProcess::NormalExit);
    QCOMPARE(foreground.exitCode(), 0);
    QCOMPARE(log().count(heartbeatDeinitialized), deinitializedBefore + 1);
}

void tst_Service::stoppedDaemonIsGone_data()
{
    QTest::addColumn<int>("signal"); // 0: stopped with "-t"
    QTest::newRow("-t") << 0;
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
}

void tst_Service::stoppedDaemonIsGone()
{
    QFETCH(int, signal);
    const int startedBefore = log().count("heartbeat 1\n");
    const int deinitializedBefore = log().count(heartbeatDeinitialized);
    QCOMPARE(run({}).exitCode, 0);
    QList<qint64> daemons;
    QVERIFY(waitFor(
        [&] { return (daemons = processesOf(path("corvane-demo-service"))).size() == 1; }, 10000));
    QTRY_VERIFY_WITH_TIMEOUT(log().count("heartbeat 1\n") > startedBefore, 30000);

    if (signal == 0) {
        QCOMPARE(run({"-t"}).exitCode, 0);
    } else {
        QCOMPARE(::kill(pid_t(daemons.first()), signal), 0);
    }
    QTRY_VERIFY_WITH_TIMEOUT(log().count(heartbeatDeinitialized) > deinitializedBefore, 30000);
    QVERIFY2(waitUntilGone(daemons.first(), 5000), "the stopped daemon is still running");
}

void tst_Service::daemonThatCannotStartIsReported()
{
    writeConfiguration(name, "<plugin><library>Missing</library></plugin>");
    const Run result = run({}, 10000);
    QCOMPARE(result.out, "The service " + name + " could not start\n");
    QCOMPARE(result.exitCode, 1);
    for (const qint64 pid : processesOf(path("corvane-demo-service"))) {
        QVERIFY2(waitUntilGone(pid, 5000), "the daemon that could not start is still running");
    }
}

void tst_Service::sighupKeepsTheFileLog()
{
    // A plain file appender without "Append=true": log4cplus opens it truncating by default.
    writeFile(path("corvane-demo-service.properties"),
              "log4cplus.rootLogger=INFO, FILE\n"
              "log4cplus.appender.FILE=log4cplus::FileAppender\n"
              "log4cplus.appender.FILE.File=logs/corvane-demo-service.log\n"
              "log4cplus.appender.FILE.layout=log4cplus::PatternLayout\n"
              "log4cplus.appender.FILE.layout.ConversionPattern=%m%n\n");
    QFile::remove(path("logs/corvane-demo-service.log"));
    QProcess foreground;
    foreground.start(path("corvane-demo-service"), {"-e"});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("heartbeat 3\n"), 30000);
    const QString before = log();

    const int beats = before.count(QRegularExpression("heartbeat \\d+\n"));
    QCOMPARE(::kill(pid_t(foreground.processId()), SIGHUP), 0);
    // Re-read: logging starts again with its first line, or the file was cut; two seconds of
    // beats later at the most.
    QTRY_VERIFY_WITH_TIMEOUT(
        log().count("start of log file") > 1 || !log().startsWith(before)
            || log().contains(QStringLiteral("heartbeat %1\n").arg(beats + 20)),
        30000);
    QVERIFY2(log().startsWith(before), qPrintable(log().left(2000)));
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(QStringLiteral("heartbeat %1\n").arg(beats + 25)),
                             30000);

    foreground.terminate();
    QVERIFY(foreground.waitForFinished(30000));
    QCOMPARE(foreground.exitCode(), 0);
}

QTEST_MAIN(tst_Service)
#include "tst_Service.moc"
