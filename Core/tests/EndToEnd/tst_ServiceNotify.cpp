#include "Processes.h"
#include "TestFiles.h"

#include <QSocketNotifier>
#include <QtTest>

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace {
const QByteArray ready = "READY=1";
const QByteArray ping = "WATCHDOG=1";
const QList<QByteArray> started {"STATUS=Loading plug-ins", "STATUS=Starting plug-ins",
                                 "STATUS=Running", ready};
const QString plugins = "<plugin><library>Inventory</library></plugin>"
                        "<plugin><library>Heartbeat</library><configuration>"
                        "<intervalMs>100</intervalMs></configuration></plugin>"
                        "<plugin><library>Blocker</library><configuration>"
                        "<blockOnCommandMs>2000</blockOnCommandMs></configuration></plugin>";
const QRegularExpression
    heartbeatDeinitialized(R"(deinitPlugin: Plugin "?HeartbeatPlugin"? deinitialized\.)");

// The socket systemd hands a service in NOTIFY_SOCKET: every datagram, with the time at which
// it arrived (the kernel's time stamp, in ms, so that a busy test does not shift it).
class NotifySocket : public QObject
{
public:
    explicit NotifySocket(const QString& path)
    {
        QFile::remove(path);
        const QByteArray name = QFile::encodeName(path);
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, name.constData(), sizeof address.sun_path);
        descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int on = 1;
        ::setsockopt(descriptor, SOL_SOCKET, SO_TIMESTAMP, &on, sizeof on);
        bound = descriptor >= 0 && name.size() < int(sizeof address.sun_path)
            && ::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, &NotifySocket::read);
    }
    ~NotifySocket() override
    {
        delete notifier;
        ::close(descriptor);
    }

    void read()
    {
        char buffer[4096];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(timeval))];
        iovec data {buffer, sizeof buffer};
        msghdr message {};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        for (;;) {
            message.msg_control = control;
            message.msg_controllen = sizeof control;
            const ssize_t size = ::recvmsg(descriptor, &message, 0);
            if (size < 0) {
                return;
            }
            timeval time {};
            const cmsghdr* header = CMSG_FIRSTHDR(&message);
            if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SO_TIMESTAMP) {
                memcpy(&time, CMSG_DATA(header), sizeof time);
            }
            received.append(
                {QByteArray(buffer, int(size)), qint64(time.tv_sec) * 1000 + time.tv_usec / 1000});
        }
    }
    // Everything but the watchdog's pings, in the order sent.
    QList<QByteArray> texts() const
    {
        QList<QByteArray> result;
        for (const auto& datagram : received) {
            if (datagram.text != ping) {
                result << datagram.text;
            }
        }
        return result;
    }
    QList<qint64> pings() const
    {
        QList<qint64> result;
        for (const auto& datagram : received) {
            if (datagram.text == ping) {
                result << datagram.ms;
            }
        }
        return result;
    }

    bool bound = false;

private:
    struct Datagram
    {
        QByteArray text;
        qint64 ms;
    };
    QList<Datagram> received;
    int descriptor = -1;
    QSocketNotifier* notifier = nullptr;
};

QString join(const QList<QByteArray>& texts)
{
    QByteArray all = "datagrams:";
    for (const QByteArray& text : texts) {
        all += " [" + text + "]";
    }
    return QString::fromUtf8(all);
}
} // namespace

// The demo's service executable, copied into a temporary folder, run in the foreground as
// systemd runs a Type=notify service, with a socket of the test's own as NOTIFY_SOCKET.
class tst_ServiceNotify : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    void startsAndStops_data();
    void startsAndStops();
    void failedStart_data();
    void failedStart();
    void watchdog_data();
    void watchdog();
    void blockedLoopSendsNoPings();
    void reload_data();
    void reload();
    void installedUnit_data();
    void installedUnit();

private:
    enum WatchdogPid { Unset, Own, Other };
    void start(QProcess& service, const QStringList& arguments, int watchdogUsec = 0,
               WatchdogPid pid = Unset);
    bool waitUntilReady(QProcess& service, NotifySocket& notify);
    void stop(QProcess& service, NotifySocket& notify);
    QProcess::ProcessState runClient(const QStringList& arguments, int* exitCode, QString* out);
    void writeConfiguration(const QString& file, const QString& serviceName,
                            const QString& pluginList = plugins, const QString& watchdogSec = {});
    QString path(const QString& name) const { return folder.filePath(name); }
    QString log() const
    {
        return QString::fromUtf8(readFile(path("logs/corvane-demo-service.log")));
    }

    QTemporaryDir folder;
    QString name;
};

void tst_ServiceNotify::initTestCase()
{
    QVERIFY(folder.isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file : {"corvane-demo-service", "libInventory.so", "libHeartbeat.so",
                                "corvane-demo-service.properties", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), path(file)), qPrintable(file));
    }
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + "/libBlocker.so",
                        path("libBlocker.so")));
    name = QStringLiteral("tst-notify-%1").arg(QCoreApplication::applicationPid());
    writeConfiguration("corvane-demo-service.xml", name);
}

void tst_ServiceNotify::cleanupTestCase()
{
    QVERIFY(killProcessesOf(path("corvane-demo-service")));
}

void tst_ServiceNotify::cleanup()
{
    QVERIFY(killProcessesOf(path("corvane-demo-service")));
    QVERIFY(QDir(path("units")).removeRecursively());
    writeConfiguration("corvane-demo-service.xml", name);
    QFile::remove(path("corvane-demo-service.properties"));
    QVERIFY(
        QFile::copy(QDir(QStringLiteral(DEMO_FOLDER)).filePath("corvane-demo-service.properties"),
                    path("corvane-demo-service.properties")));
}

void tst_ServiceNotify::writeConfiguration(const QString& file, const QString& serviceName,
                                           const QString& pluginList, const QString& watchdogSec)
{
    const QString service = watchdogSec.isEmpty()
        ? QString()
        : "<service><watchdogsec>" + watchdogSec + "</watchdogsec></service>";
    writeFile(path(file),
              QStringLiteral("<config><information><applicationname>%1</applicationname>"
                             "<applicationtype>SERVICE</applicationtype></information>%2"
                             "<plugins>%3</plugins></config>")
                  .arg(serviceName.toHtmlEscaped(), service, pluginList)
                  .toUtf8());
}

// As systemd starts the service: in the foreground with NOTIFY_SOCKET, and with WATCHDOG_USEC
// when watchdogUsec > 0. A shell that replaces itself with the service gives it WATCHDOG_PID=$$.
void tst_ServiceNotify::start(QProcess& service, const QStringList& arguments, int watchdogUsec,
                              WatchdogPid pid)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVANE_SYSTEMD_UNIT_DIR", path("units"));
    environment.insert("NOTIFY_SOCKET", path("notify"));
    environment.remove("WATCHDOG_USEC");
    environment.remove("WATCHDOG_PID");
    if (watchdogUsec > 0) {
        environment.insert("WATCHDOG_USEC", QString::number(watchdogUsec));
    }
    if (pid == Other) {
        environment.insert("WATCHDOG_PID", QString::number(QCoreApplication::applicationPid()));
    }
    service.setProcessEnvironment(environment);
    const QString script
        = QString(pid == Own ? "export WATCHDOG_PID=$$; " : "") + "exec \"$0\" \"$@\"";
    service.start("/bin/sh", QStringList {"-c", script, path("corvane-demo-service")} + arguments);
}

bool tst_ServiceNotify::waitUntilReady(QProcess& service, NotifySocket& notify)
{
    return waitFor(
               [&] {
                   return notify.texts().contains(ready) || service.state() == QProcess::NotRunning;
               },
               60000)
        && notify.texts().contains(ready);
}

// SIGTERM, as systemd stops the service: STOPPING=1, then the exit with 0.
void tst_ServiceNotify::stop(QProcess& service, NotifySocket& notify)
{
    const int before = notify.texts().size();
    service.terminate();
    QVERIFY(service.waitForFinished(60000));
    QCOMPARE(service.exitStatus(), QProcess::NormalExit);
    QCOMPARE(service.exitCode(), 0);
    notify.read();
    QCOMPARE(notify.texts().mid(before), QList<QByteArray> {"STOPPING=1"});
}

// A control action ("-c 5", "-i", ...), run as a user runs it, without systemd's socket.
QProcess::ProcessState tst_ServiceNotify::runClient(const QStringList& arguments, int* exitCode,
                                                    QString* out)
{
    QProcess client;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVANE_SYSTEMD_UNIT_DIR", path("units"));
    environment.remove("NOTIFY_SOCKET");
    client.setProcessEnvironment(environment);
    client.start(path("corvane-demo-service"), arguments);
    if (!client.waitForFinished(60000)) {
        client.kill();
        client.waitForFinished();
        return QProcess::Running;
    }
    *exitCode = client.exitStatus() == QProcess::NormalExit ? client.exitCode() : -2;
    *out = QString::fromLocal8Bit(client.readAllStandardOutput());
    return QProcess::NotRunning;
}

void tst_ServiceNotify::startsAndStops_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no argument") << QStringList();
    // The default configuration names a missing plug-in: only other.xml lets it start.
    QTest::newRow("-C other.xml") << QStringList {"-C", "other.xml"};
}

void tst_ServiceNotify::startsAndStops()
{
    QFETCH(QStringList, arguments);
    if (!arguments.isEmpty()) {
        writeConfiguration("other.xml", name);
        writeConfiguration("corvane-demo-service.xml", name,
                           "<plugin><library>Missing</library></plugin>");
    }
    NotifySocket notify(path("notify"));
    QVERIFY(notify.bound);
    QProcess service;
    start(service, arguments);
    QVERIFY2(waitUntilReady(service, notify), qPrintable(join(notify.texts())));
    QCOMPARE(notify.texts(), started);
    // In place: the process that systemd started is the service, and there is no other.
    QCOMPARE(processesOf(path("corvane-demo-service")), QList<qint64> {service.processId()});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("heartbeat 1\n"), 30000);
    const int deinitialized = log().count(heartbeatDeinitialized);
    stop(service, notify);
    QCOMPARE(log().count(heartbeatDeinitialized), deinitialized + 1);
}

void tst_ServiceNotify::failedStart_data()
{
    QTest::addColumn<QString>("pluginList");
    QTest::addColumn<QString>("failure"); // what the status line names
    QTest::newRow("missing library") << "<plugin><library>Missing</library></plugin>"
                                     << "Missing";
    QTest::newRow("plug-in refuses to start")
        << "<plugin><library>Blocker</library><configuration>"
           "<failInitialize>true</failInitialize></configuration></plugin>"
        << "refuses to start";
}

void tst_ServiceNotify::failedStart()
{
    QFETCH(QString, pluginList);
    QFETCH(QString, failure);
    writeConfiguration("corvane-demo-service.xml", name, pluginList);
    NotifySocket notify(path("notify"));
    QProcess service;
    start(service, {});
    QVERIFY(service.waitForFinished(60000));
    notify.read();
    const QList<QByteArray> texts = notify.texts();
    QCOMPARE(service.exitStatus(), QProcess::NormalExit);
    QCOMPARE(service.exitCode(), 1);
    QVERIFY2(!texts.contains(ready), qPrintable(join(texts)));
    QVERIFY2(
        !texts.isEmpty()
            && QRegularExpression("^STATUS=The Service failed to start \\[.*" + failure + ".*\\]$")
                   .match(QString::fromUtf8(texts.last()))
                   .hasMatch(),
        qPrintable(join(texts)));
}

void tst_ServiceNotify::watchdog_data()
{
    QTest::addColumn<int>("watchdogUsec");
    QTest::addColumn<int>("pid");
    QTest::addColumn<bool>("pings");
    QTest::newRow("asked, no WATCHDOG_PID") << 400000 << int(Unset) << true;
    QTest::newRow("asked for this process") << 400000 << int(Own) << true;
    QTest::newRow("asked for another process") << 400000 << int(Other) << false;
    QTest::newRow("not asked") << 0 << int(Unset) << false;
}

void tst_ServiceNotify::watchdog()
{
    QFETCH(int, watchdogUsec);
    QFETCH(int, pid);
    QFETCH(bool, pings);
    NotifySocket notify(path("notify"));
    QProcess service;
    start(service, {}, watchdogUsec, WatchdogPid(pid));
    QVERIFY2(waitUntilReady(service, notify), qPrintable(join(notify.texts())));
    if (!pings) {
        QVERIFY(!QTest::qWaitFor([&] { return !notify.pings().isEmpty(); }, 2000));
    } else {
        // Every 200 ms: some 15 pings in three seconds, on average no less than 140 ms and
        // no more than 300 ms apart.
        QVERIFY(QTest::qWaitFor([&] { return !notify.pings().isEmpty(); }, 10000));
        const qint64 first = notify.pings().first();
        QVERIFY(QTest::qWaitFor([&] { return notify.pings().last() >= first + 3000; }, 20000));
        QList<qint64> window = notify.pings();
        while (window.size() > 2 && window.at(window.size() - 2) >= first + 3000) {
            window.removeLast();
        }
        const qint64 mean = (window.last() - first) / (window.size() - 1);
        QVERIFY2(mean >= 140 && mean <= 300,
                 qPrintable(QStringLiteral("%1 pings, %2 ms apart").arg(window.size()).arg(mean)));
    }
    stop(service, notify);
}

void tst_ServiceNotify::blockedLoopSendsNoPings()
{
    NotifySocket notify(path("notify"));
    QProcess service;
    start(service, {}, 400000);
    QVERIFY2(waitUntilReady(service, notify), qPrintable(join(notify.texts())));
    QVERIFY(QTest::qWaitFor([&] { return notify.pings().size() >= 3; }, 10000));
    const int before = notify.pings().size();
    int exitCode = -1;
    QString out;
    // The Blocker plug-in holds the main thread for two seconds on a command.
    QCOMPARE(runClient({"-c", "5"}, &exitCode, &out), QProcess::NotRunning);
    QCOMPARE(exitCode, 0);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("test: Blocker unblocked"), 30000);
    QVERIFY(log().contains("test: Blocker blocking on command 5"));
    QVERIFY(QTest::qWaitFor([&] { return notify.pings().size() >= before + 3; }, 10000));
    const QList<qint64> times = notify.pings().mid(before - 1);
    qint64 longest = 0;
    for (int i = 1; i < times.size(); ++i) {
        longest = qMax(longest, times.at(i) - times.at(i - 1));
    }
    QVERIFY2(longest >= 1800, qPrintable(QStringLiteral("longest pause %1 ms").arg(longest)));
    stop(service, notify);
}

void tst_ServiceNotify::reload_data()
{
    QTest::addColumn<QString>("appender");
    QTest::newRow("FileAppender") << "log4cplus::FileAppender";
    QTest::newRow("RollingFileAppender") << "log4cplus::RollingFileAppender";
}

void tst_ServiceNotify::reload()
{
    QFETCH(QString, appender);
    // Without "Append=true": log4cplus opens the file truncating by default.
    const QString properties = "log4cplus.rootLogger=INFO, FILE\n"
                               "log4cplus.appender.FILE=%1\n"
                               "log4cplus.appender.FILE.File=logs/corvane-demo-service.log\n"
                               "log4cplus.appender.FILE.layout=log4cplus::PatternLayout\n"
                               "log4cplus.appender.FILE.layout.ConversionPattern=%2%m%n\n";
    writeFile(path("corvane-demo-service.properties"), properties.arg(appender, "").toUtf8());
    QFile::remove(path("logs/corvane-demo-service.log"));
    NotifySocket notify(path("notify"));
    QProcess service;
    start(service, {});
    QVERIFY2(waitUntilReady(service, notify), qPrintable(join(notify.texts())));
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("heartbeat 3\n"), 30000);
    writeFile(path("corvane-demo-service.properties"),
              properties.arg(appender, "reloaded: ").toUtf8());
    const QString before = log();

    QCOMPARE(::kill(pid_t(service.processId()), SIGHUP), 0);
    QTRY_VERIFY_WITH_TIMEOUT(notify.texts().count(ready) == 2, 30000);
    QCOMPARE(notify.texts().mid(started.size()), (QList<QByteArray> {"RELOADING=1", ready}));
    const QRegularExpression reloaded(R"(^reloaded: .*heartbeat \d+$)",
                                      QRegularExpression::MultilineOption);
    QVERIFY2(waitFor([&] { return log().contains(reloaded); }, 30000),
             qPrintable(log().right(2000)));
    QVERIFY2(log().startsWith(before), qPrintable(log().left(2000)));
    stop(service, notify);
}

void tst_ServiceNotify::installedUnit_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("configuration");
    QTest::addColumn<QString>("watchdogSec");
    QTest::addColumn<QString>("execStartOptions");
    QTest::newRow("default configuration") << QStringList() << "corvane-demo-service.xml"
                                           << ""
                                           << "";
    QTest::newRow("-C, watchdog") << QStringList {"-C", "other.xml"} << "other.xml"
                                  << "30"
                                  << " -C other.xml";
    QTest::newRow("-C with a blank, watchdog")
        << QStringList {"-C", "my service.xml"} << "my service.xml"
        << "5"
        << " -C \"my service.xml\"";
}

void tst_ServiceNotify::installedUnit()
{
    QFETCH(QStringList, options);
    QFETCH(QString, configuration);
    QFETCH(QString, watchdogSec);
    QFETCH(QString, execStartOptions);
    // Each configuration names a service of its own, so each action shows the one it read.
    static int row = 0;
    const QString service = name + "-" + QString::number(++row);
    writeConfiguration(configuration, service, plugins, watchdogSec);
    const QString unit = path("units/" + service + ".service");
    int exitCode = -1;
    QString out;

    QCOMPARE(runClient(options + QStringList {"-i"}, &exitCode, &out), QProcess::NotRunning);
    QCOMPARE(out, "The service " + service + " has been installed under: " + unit + "\n");
    QCOMPARE(exitCode, 0);
    const QString written = QString::fromUtf8(readFile(unit));
    QVERIFY2(
        written.contains("\nExecStart=" + path("corvane-demo-service") + execStartOptions + "\n"),
        qPrintable(written));
    QVERIFY2(written.contains("\nExecReload=/bin/kill -HUP $MAINPID\n"), qPrintable(written));
    QVERIFY2(watchdogSec.isEmpty() ? !written.contains("WatchdogSec=")
                                   : written.contains("\nWatchdogSec=" + watchdogSec + "\n"),
             qPrintable(written));

    QProcess verify;
    verify.start(QStandardPaths::findExecutable("systemd-analyze"), {"verify", "--man=no", unit});
    QVERIFY(verify.waitForFinished(60000));
    QCOMPARE(QString::fromLocal8Bit(verify.readAllStandardError()), QString());
    QCOMPARE(verify.exitCode(), 0);

    QCOMPARE(runClient(options + QStringList {"-v"}, &exitCode, &out), QProcess::NotRunning);
    QVERIFY2(out.endsWith("is installedand not running\n\n"), qPrintable(out));
    QCOMPARE(runClient(options + QStringList {"-u"}, &exitCode, &out), QProcess::NotRunning);
    QCOMPARE(out, "The service " + service + " has been uninstalled.\n");
    QCOMPARE(exitCode, 0);
    QVERIFY(!QFile::exists(unit));
}

QTEST_MAIN(tst_ServiceNotify)
#include "tst_ServiceNotify.moc"
