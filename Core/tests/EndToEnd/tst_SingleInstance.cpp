#include "Processes.h"
#include "TestFiles.h"

#include <QtTest>

#include <csignal>
#include <memory>
#include <unistd.h>

// Real demo processes with a single-application id: a copy of the demo in a temporary folder
// whose GUI configuration asks for one instance per user, without the notification box. Each
// test has a runtime folder (XDG_RUNTIME_DIR) and a temporary folder (TMPDIR) of its own.
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
    void burstAfterAKillLeavesOneFirst();
    void requestsDuringStartUpAreDelivered();
    void anyIdWorks_data();
    void anyIdWorks();
    void emptyLockFileIsStale();
    void lockThatCannotBeTakenFailsAtOnce();
    void waitingInstanceTakesOverFromADeadHolder();
    void otherUserGetsAFirstInstanceOfTheirOwn();

private:
    QProcess* start(const QStringList& arguments, int closeAfterMs, const QStringList& runAs = {});
    int windowsShown() const { return log().count("inventory window shown"); }
    bool waitForWindows(int count);
    bool handsOver(const QString& configuration, const QString& file);
    QString lockFileOf(qint64 pid) const;
    QString path(const QString& name) const { return folder.filePath(name); }
    QByteArray log() const { return readFile(path("logs/corvane-demo.log")); }
    void writeConfiguration(const QString& name, const QString& id,
                            const QString& firstPlugin = {});

    QTemporaryDir folder;
    std::unique_ptr<QTemporaryDir> state; // the runtime and temporary folders of one test
    QProcessEnvironment environment;
    std::vector<std::unique_ptr<QProcess>> processes; // ended by cleanup()
    QSet<qint64> started; // their process ids
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
    QVERIFY(QFile::copy(QCoreApplication::applicationDirPath() + "/libHolder.so",
                        path("libHolder.so")));
    writeConfiguration(
        "single.xml",
        QStringLiteral("tst_SingleInstance-%1").arg(QCoreApplication::applicationPid()));
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
    state = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(state->path()).mkdir("runtime") && QDir(state->path()).mkdir("tmp"));
    QFile::setPermissions(state->filePath("runtime"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_RUNTIME_DIR", state->filePath("runtime"));
    environment.insert("TMPDIR", state->filePath("tmp"));
}

void tst_SingleInstance::cleanup()
{
    for (auto& process : processes) {
        if (process->state() != QProcess::NotRunning) {
            process->kill(); // also ends a stopped process
            QVERIFY(process->waitForFinished(30000));
        }
    }
    processes.clear();
    removeSharedMemoryOf(started);
    started.clear();
}

// The demo's GUI configuration under another id, optionally with a first plug-in before the
// demo's own.
void tst_SingleInstance::writeConfiguration(const QString& name, const QString& id,
                                            const QString& firstPlugin)
{
    QByteArray xml = readFile(path("corvane-demo-gui.xml"));
    xml.replace("<singleappid>corvane-demo-gui</singleappid>",
                ("<singleappid>" + id.toHtmlEscaped() + "</singleappid>").toUtf8())
        .replace("<singleappusernotification>true", "<singleappusernotification>false")
        .replace("<plugins>", ("<plugins>" + firstPlugin).toUtf8());
    writeFile(path(name), xml);
}

QProcess* tst_SingleInstance::start(const QStringList& arguments, int closeAfterMs,
                                    const QStringList& runAs)
{
    processes.push_back(std::make_unique<QProcess>());
    QProcess* process = processes.back().get();
    QProcessEnvironment processEnvironment = environment;
    processEnvironment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", QString::number(closeAfterMs));
    process->setProcessEnvironment(processEnvironment);
    process->setWorkingDirectory(folder.path());
    if (runAs.isEmpty()) {
        process->start(path("corvane-demo"), arguments);
    } else {
        process->start(runAs.first(),
                       runAs.mid(1) + QStringList {path("corvane-demo")} + arguments);
    }
    started << process->processId();
    return process;
}

bool tst_SingleInstance::waitForWindows(int count)
{
    return waitFor([this, count] { return windowsShown() >= count; }, 60000);
}

// Whether a later instance asked to load the file ends with -1 and the running one loads it.
bool tst_SingleInstance::handsOver(const QString& configuration, const QString& file)
{
    QProcess* later = start({"-C", configuration, file}, 60000);
    if (!later->waitForFinished(30000) || later->exitCode() != 255) {
        qWarning() << "the later instance ended with" << later->exitCode();
        return false;
    }
    if (!waitFor([&] { return log().contains(("items from " + file).toUtf8()); }, 30000)) {
        qWarning() << "the running instance did not load" << file;
        return false;
    }
    return true;
}

// The file in the test's runtime or temporary folder that names the process: its lock.
QString tst_SingleInstance::lockFileOf(qint64 pid) const
{
    const QRegularExpression naming(QStringLiteral("(^|\\D)%1(\\D|$)").arg(pid));
    QDirIterator files(state->path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        if (naming.match(QString::fromUtf8(readFile(file).left(256))).hasMatch()) {
            return file;
        }
    }
    return QString();
}

void tst_SingleInstance::secondInstanceHandsOverAndEnds()
{
    start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    QProcess* second = start({"-C", "single.xml", "other.csv"}, 60000);
    QVERIFY(second->waitForFinished(60000));
    QCOMPARE(second->exitStatus(), QProcess::NormalExit);
    QCOMPARE(second->exitCode(), 255); // -1 as the shell sees it
    QTRY_VERIFY_WITH_TIMEOUT(
        log().contains(("loadFile: 1 items from " + path("other.csv")).toUtf8()), 30000);
    QVERIFY(log().contains("handleMessage: raise requested"));
}

void tst_SingleInstance::killedFirstInstanceIsReplaced()
{
    QProcess* first = start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    first->kill(); // SIGKILL: its lock, socket and shared memory stay behind
    QVERIFY(first->waitForFinished(30000));
    QProcess* next = start({"-C", "single.xml"}, 500);
    QVERIFY(next->waitForFinished(60000));
    QCOMPARE(next->exitCode(), 0); // became the first instance and closed by itself
    QVERIFY(waitForWindows(2));
}

void tst_SingleInstance::tenAtOnceLeaveOneRunning()
{
    QList<QProcess*> burst;
    for (int i = 0; i < 10; ++i) {
        burst << start({"-C", "single.xml"}, 3000);
    }
    QList<int> codes;
    for (QProcess* process : burst) {
        QVERIFY(process->waitForFinished(120000));
        codes << (process->exitStatus() == QProcess::NormalExit ? process->exitCode() : -999);
    }
    std::sort(codes.begin(), codes.end());
    QCOMPARE(codes, QList<int>({0, 255, 255, 255, 255, 255, 255, 255, 255, 255}));
    QCOMPARE(windowsShown(), 1);
}

// Round after round: the first instance is killed, five start at once; one of them runs as
// the first instance, the others hand over, and so does every later start.
void tst_SingleInstance::burstAfterAKillLeavesOneFirst()
{
    QProcess* first = start({"-C", "single.xml"}, 60000);
    for (int round = 1; round <= 5; ++round) {
        QVERIFY(waitForWindows(round));
        first->kill();
        QVERIFY(first->waitForFinished(30000));

        QList<QProcess*> burst;
        for (int i = 0; i < 5; ++i) {
            burst << start({"-C", "single.xml"}, 60000);
        }
        const auto ended = [&burst] {
            return std::count_if(burst.begin(), burst.end(), [](QProcess* process) {
                return process->state() == QProcess::NotRunning;
            });
        };
        QTRY_VERIFY_WITH_TIMEOUT(ended() >= 4, 60000);
        QStringList codes;
        for (QProcess* process : burst) {
            if (process->state() == QProcess::NotRunning) {
                codes << QString::number(process->exitCode());
            } else {
                first = process;
            }
        }
        QVERIFY2(
            codes.join(' ') == "255 255 255 255",
            qPrintable(QStringLiteral("round %1, exit codes: %2").arg(round).arg(codes.join(' '))));
        const QString file = path(QStringLiteral("round%1.csv").arg(round));
        QVERIFY(QFile::copy(path("other.csv"), file));
        QVERIFY2(handsOver("single.xml", file), qPrintable(QStringLiteral("round %1").arg(round)));
        QCOMPARE(first->state(), QProcess::Running);
        QCOMPARE(windowsShown(), round + 1);
    }
}

// Later instances hand their files over while the first one is still loading its plug-ins:
// each acknowledged request reaches the window once it is there, in the order of the requests.
void tst_SingleInstance::requestsDuringStartUpAreDelivered()
{
    writeConfiguration(
        "holding.xml",
        QStringLiteral("tst_SingleInstance-holding-%1").arg(QCoreApplication::applicationPid()),
        "<plugin><library>Holder</library><configuration><holdUntil>" + path("release")
            + "</holdUntil></configuration></plugin>");
    QFile::remove(path("release"));
    start({"-C", "holding.xml"}, 60000);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains("test: Holder holding"), 60000);

    QStringList files;
    for (int i = 1; i <= 3; ++i) {
        files << path(QStringLiteral("request%1.csv").arg(i));
        QVERIFY(QFile::copy(path("other.csv"), files.last()));
        QProcess* later = start({"-C", "holding.xml", files.last()}, 60000);
        QVERIFY(later->waitForFinished(30000));
        QCOMPARE(later->exitCode(), 255); // acknowledged
    }
    QVERIFY(!log().contains("test: Holder released"));
    writeFile(path("release"), "");

    QVERIFY(waitForWindows(1));
    const auto handled = [this] { // the requests as the log shows them
        QStringList lines;
        for (const QByteArray& line : log().split('\n')) {
            if (line.contains("handleMessage") || line.contains("loadFile")) {
                lines << QString::fromUtf8(line);
            }
        }
        return lines.join('\n');
    };
    QVERIFY2(
        waitFor([&] { return log().contains(("items from " + files.last()).toUtf8()); }, 10000),
        qPrintable("requests handled:\n" + handled()));
    const QByteArray written = log();
    int previous = written.indexOf("inventory window shown");
    for (const QString& file : files) {
        const int at = written.indexOf(("loadFile: 1 items from " + file).toUtf8());
        QVERIFY2(at > previous, qPrintable(file + " not loaded in order:\n" + handled()));
        previous = at;
    }
}

void tst_SingleInstance::anyIdWorks_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("temporaryFolder"); // empty: the test's own
    const QString pid = QString::number(QCoreApplication::applicationPid());
    QTest::newRow("slashes") << "tst/Single/Instance-" + pid << "";
    QTest::newRow("200 characters") << QString(200, 'i') + pid << "";
    QTest::newRow("blanks and umlauts") << QString::fromUtf8("tst Single Ünstance ") + pid << "";
    // As a missing folder is to a user who may not write to the root folder.
    QTest::newRow("temporary folder not writable") << "tst_SingleInstance-" + pid << "/proc/sys";
}

// The first instance runs with its lock in the runtime folder; a later one hands over.
void tst_SingleInstance::anyIdWorks()
{
    QFETCH(QString, id);
    QFETCH(QString, temporaryFolder);
    if (!temporaryFolder.isEmpty()) {
        environment.insert("TMPDIR", temporaryFolder);
    }
    writeConfiguration("id.xml", id);
    QProcess* first = start({"-C", "id.xml"}, 60000);
    QTRY_VERIFY_WITH_TIMEOUT(windowsShown() == 1 || first->state() == QProcess::NotRunning, 60000);
    QVERIFY2(first->state() == QProcess::Running,
             qPrintable(QStringLiteral("the first instance ended with %1: %2")
                            .arg(first->exitCode())
                            .arg(QString::fromLocal8Bit(first->readAllStandardError()))));
    QVERIFY(handsOver("id.xml", path("other.csv")));
    const QString lock = lockFileOf(first->processId());
    QVERIFY2(lock.startsWith(state->filePath("runtime") + "/"),
             qPrintable("lock file of the first instance: '" + lock + "'"));
}

// A crash while the lock file was written leaves it empty: it names no live process.
void tst_SingleInstance::emptyLockFileIsStale()
{
    QProcess* first = start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    const QString lock = lockFileOf(first->processId());
    QVERIFY2(!lock.isEmpty(), "no lock file names the first instance");
    first->kill();
    QVERIFY(first->waitForFinished(30000));
    QVERIFY(QFile::resize(lock, 0));

    QProcess* next = start({"-C", "single.xml"}, 60000);
    QTRY_VERIFY_WITH_TIMEOUT(windowsShown() == 2 || next->state() == QProcess::NotRunning, 60000);
    QVERIFY2(next->state() == QProcess::Running,
             qPrintable(QStringLiteral("the next instance ended with %1").arg(next->exitCode())));
    QVERIFY(handsOver("single.xml", path("other.csv")));
}

// Neither the runtime folder nor the temporary folder can hold a lock: no instance can tell
// whether it is the first, which is said at once.
void tst_SingleInstance::lockThatCannotBeTakenFailsAtOnce()
{
    writeFile(path("plain"), "");
    environment.insert("XDG_RUNTIME_DIR", path("plain/runtime"));
    environment.insert("TMPDIR", "/proc/sys");
    QProcess* alone = start({"-C", "single.xml"}, 500);
    QVERIFY2(alone->waitForFinished(5000), "still running after 5 s");
    QCOMPARE(alone->exitCode(), 254); // -2
    const QString errors = QString::fromLocal8Bit(alone->readAllStandardError());
    QVERIFY2(errors.contains("lock", Qt::CaseInsensitive), qPrintable(errors));
    QCOMPARE(windowsShown(), 0);
}

// The first instance stops answering (SIGSTOP), a second one starts and waits for it; when the
// first dies, the second finds the lock stale and runs as the first instance.
void tst_SingleInstance::waitingInstanceTakesOverFromADeadHolder()
{
    QProcess* first = start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    QCOMPARE(::kill(pid_t(first->processId()), SIGSTOP), 0);
    QProcess* second = start({"-C", "single.xml"}, 60000);
    QByteArray said; // its configuration is read just before it looks for the first instance
    QVERIFY(waitFor(
        [&] {
            said += second->readAllStandardError() + second->readAllStandardOutput();
            return said.contains("initialize: Opening") || second->state() == QProcess::NotRunning;
        },
        30000));
    // Nobody answers it, and it does not give up within the time it tries to reach the first.
    QVERIFY2(!second->waitForFinished(3000),
             qPrintable(QStringLiteral("the second instance ended with %1 while the first was "
                                       "stopped")
                            .arg(second->exitCode())));
    first->kill();
    QVERIFY(first->waitForFinished(30000));

    QTRY_VERIFY_WITH_TIMEOUT(windowsShown() == 2 || second->state() == QProcess::NotRunning, 60000);
    QVERIFY2(
        second->state() == QProcess::Running,
        qPrintable(QStringLiteral("the second instance ended with %1").arg(second->exitCode())));
    QVERIFY(handsOver("single.xml", path("other.csv")));
}

void tst_SingleInstance::otherUserGetsAFirstInstanceOfTheirOwn()
{
    if (::geteuid() != 0 || QStandardPaths::findExecutable("setpriv").isEmpty()) {
        QSKIP("needs root and setpriv to start the demo as another user");
    }
    environment = QProcessEnvironment::systemEnvironment(); // folders that both users can reach
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    start({"-C", "single.xml"}, 60000);
    QVERIFY(waitForWindows(1));
    QProcess* other = start({"-C", "single.xml"}, 500,
                            {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    QVERIFY(other->waitForFinished(60000));
    // Exit 0 after closing by itself: nobody's own first instance, not a hand-over (255). Its
    // log lines are not in the shared log, which belongs to root.
    QCOMPARE(other->exitCode(), 0);
}

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
