#include "TestFiles.h"

#include <QtTest>

#include <memory>
#include <unistd.h>

// Real demo processes with a single-application id: a copy of the demo in a temporary folder
// whose GUI configuration asks for one instance per user, without the notification box.
class tst_SingleInstance : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void secondInstanceHandsOverAndEnds();
    void killedFirstInstanceIsReplaced();
    void tenAtOnceLeaveOneRunning();
    void otherUserGetsAFirstInstanceOfTheirOwn();

private:
    std::unique_ptr<QProcess> start(const QStringList& arguments, int closeAfterMs,
                                    const QStringList& runAs = {});
    bool waitForWindows(int count);
    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
    QList<QProcess*> running;
};

void tst_SingleInstance::initTestCase()
{
    QVERIFY(folder.isValid());
    const QDir demo(QStringLiteral(DEMO_FOLDER));
    for (const QString& file :
         {"corvane-demo", "libInventory.so", "libWindow.so", "libHeartbeat.so",
          "corvane-demo-gui.xml", "corvane-demo.properties", "inventory.csv"}) {
        QVERIFY2(QFile::copy(demo.filePath(file), path(file)), qPrintable(file));
    }
    const QString id
        = QStringLiteral("tst_SingleInstance-%1").arg(QCoreApplication::applicationPid());
    writeFile(path("single.xml"),
              readFile(path("corvane-demo-gui.xml"))
                  .replace("<singleappid>corvane-demo-gui</singleappid>",
                           ("<singleappid>" + id + "</singleappid>").toUtf8())
                  .replace("<singleappusernotification>true", "<singleappusernotification>false"));
    writeFile(path("other.csv"), "item,quantity,price,received\nZinc,1,2.00,2026-01-01\n");
    // Readable and writable for a second user.
    QFile::setPermissions(folder.path(),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
                              | QFileDevice::ReadOther | QFileDevice::WriteOther
                              | QFileDevice::ExeOther);
}

void tst_SingleInstance::init()
{
    QFile::remove(path("logs/corvane-demo.log"));
}

void tst_SingleInstance::cleanup()
{
    for (QProcess* process : running) {
        process->kill();
        process->waitForFinished();
    }
    qDeleteAll(running);
    running.clear();
}

std::unique_ptr<QProcess> tst_SingleInstance::start(const QStringList& arguments, int closeAfterMs,
                                                    const QStringList& runAs)
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", QString::number(closeAfterMs));
    process->setProcessEnvironment(environment);
    process->setWorkingDirectory(folder.path());
    if (runAs.isEmpty()) {
        process->start(path("corvane-demo"), arguments);
    } else {
        process->start(runAs.first(),
                       runAs.mid(1) + QStringList {path("corvane-demo")} + arguments);
    }
    return process;
}

// Windows shown so far, counted in the shared log.
bool tst_SingleInstance::waitForWindows(int count)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 60000) {
        if (readFile(path("logs/corvane-demo.log")).count("inventory window shown") >= count) {
            return true;
        }
        QTest::qWait(50);
    }
    return false;
}

void tst_SingleInstance::secondInstanceHandsOverAndEnds()
{
    running << start({"-C", "single.xml"}, 60000).release();
    QVERIFY(waitForWindows(1));
    auto second = start({"-C", "single.xml", "other.csv"}, 60000);
    QVERIFY(second->waitForFinished(60000));
    QCOMPARE(second->exitStatus(), QProcess::NormalExit);
    QCOMPARE(second->exitCode(), 255); // -1 as the shell sees it
    QTRY_VERIFY_WITH_TIMEOUT(
        readFile(path("logs/corvane-demo.log"))
            .contains(("loadFile: 1 items from " + path("other.csv")).toUtf8()),
        30000);
    QVERIFY(readFile(path("logs/corvane-demo.log")).contains("handleMessage: raise requested"));
}

void tst_SingleInstance::killedFirstInstanceIsReplaced()
{
    auto first = start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    first->kill(); // SIGKILL: its lock, socket and shared memory stay behind
    QVERIFY(first->waitForFinished(30000));
    auto next = start({"-C", "single.xml"}, 500);
    QVERIFY(next->waitForFinished(60000));
    QCOMPARE(next->exitCode(), 0); // became the first instance and closed by itself
    QVERIFY(waitForWindows(2));
}

void tst_SingleInstance::tenAtOnceLeaveOneRunning()
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < 10; ++i) {
        processes.push_back(start({"-C", "single.xml"}, 3000));
    }
    QList<int> codes;
    for (auto& process : processes) {
        QVERIFY(process->waitForFinished(120000));
        codes << (process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -999);
    }
    std::sort(codes.begin(), codes.end());
    QCOMPARE(codes, QList<int>({0, 255, 255, 255, 255, 255, 255, 255, 255, 255}));
    QCOMPARE(readFile(path("logs/corvane-demo.log")).count("inventory window shown"), 1);
}

void tst_SingleInstance::otherUserGetsAFirstInstanceOfTheirOwn()
{
    if (::geteuid() != 0 || QStandardPaths::findExecutable("setpriv").isEmpty()) {
        QSKIP("needs root and setpriv to start the demo as another user");
    }
    running << start({"-C", "single.xml"}, 60000).release();
    QVERIFY(waitForWindows(1));
    auto other = start({"-C", "single.xml"}, 500,
                       {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    QVERIFY(other->waitForFinished(60000));
    // Exit 0 after closing by itself: nobody's own first instance, not a hand-over (255). Its
    // log lines are not in the shared log, which belongs to root.
    QCOMPARE(other->exitCode(), 0);
}

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
