#include "Processes.h"

#include <list>

// Real demo processes with a single-application id: a copy of the demo in a temporary folder
// whose GUI configuration asks for one instance per user, without the notification box. Each
// test has a runtime folder (XDG_RUNTIME_DIR) and a temporary folder (TMPDIR) of its own.
class tst_SingleInstance : public QObject
{
    Q_OBJECT

    QTemporaryDir folder;
    std::unique_ptr<QTemporaryDir> state; // the runtime and temporary folders of one test
    QProcessEnvironment environment;
    std::list<QProcess> processes; // ended by cleanup()
    QSet<qint64> started; // their ids

    QString path(const QString& name) const { return folder.filePath(name); }
    QByteArray log() const { return readFile(path("logs/corvane-demo.log")); }
    int windows() const { return log().count("inventory window shown"); }

    // The demo's GUI configuration under another id, optionally with a first plug-in.
    void configure(const QString& name, const QString& id, const QString& firstPlugin = {})
    {
        writeFile(path(name),
                  readFile(path("corvane-demo-gui.xml"))
                      .replace("<singleappid>corvane-demo-gui", "<singleappid>" + id.toUtf8())
                      .replace("usernotification>true", "usernotification>false")
                      .replace("<plugins>", "<plugins>" + firstPlugin.toUtf8()));
    }

    QProcess* start(const QStringList& arguments, int closeAfterMs = 60000,
                    const QStringList& runAs = {})
    {
        QProcess& process = processes.emplace_back();
        QProcessEnvironment processEnvironment = environment;
        processEnvironment.insert("CORVANE_DEMO_CLOSE_AFTER_MS", QString::number(closeAfterMs));
        // A state folder each: an instance killed while it starts its plug-ins must not make
        // the next one ask what to do about them.
        processEnvironment.insert("XDG_STATE_HOME",
                                  path("state/" + QString::number(processes.size())));
        process.setProcessEnvironment(processEnvironment);
        process.start(runAs.value(0, path("corvane-demo")), runAs.mid(1) + arguments);
        started << process.processId();
        return &process;
    }

    // Whether a later instance asked to load the file ends with -1 and the running one loads it.
    bool handsOver(const QString& file, const QString& configuration = "single.xml")
    {
        QProcess* later = start({"-C", configuration, file});
        return later->waitForFinished(30000) && later->exitCode() == 255
            && QTest::qWaitFor(
                   [&] { return log().contains("loadFile: 1 items from " + file.toUtf8()); },
                   30000);
    }

    QString lockFileOf(qint64 pid) const // the file in the runtime folder that names it
    {
        const QRegularExpression naming(QStringLiteral("(^|\\D)%1(\\D|$)").arg(pid));
        for (const QFileInfo& file :
             QDir(state->filePath("runtime")).entryInfoList(QDir::Files | QDir::Hidden))
            if (naming.match(readFile(file.filePath())).hasMatch())
                return file.filePath();
        return "none";
    }

    // Whether the process runs as the first instance, once a window (the count-th) shows.
    bool runsFirst(QProcess* process, int count, int timeoutMs = 60000)
    {
        return QTest::qWaitFor(
                   [&] { return windows() == count || process->state() == QProcess::NotRunning; },
                   timeoutMs)
            && process->state() == QProcess::Running;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(copyInto(folder.path(), DEMO_FOLDER,
                         {"corvane-demo", "libInventory.so", "libWindow.so", "libHeartbeat.so",
                          "corvane-demo-gui.xml", "corvane-demo.properties", "inventory.csv",
                          QCoreApplication::applicationDirPath() + "/libHolder.so"}));
        configure("single.xml",
                  "tst_SingleInstance-" + QString::number(QCoreApplication::applicationPid()));
        writeFile(path("other.csv"), "item,quantity,price,received\nZinc,1,2.00,2026-01-01\n");
        QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7007))); // others too
    }
    void init()
    {
        QFile::remove(path("logs/corvane-demo.log"));
        state = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(state->path()).mkdir("runtime") && QDir(state->path()).mkdir("tmp"));
        QVERIFY(QFile::setPermissions(state->filePath("runtime"), QFile::Permissions(0x7000)));
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_RUNTIME_DIR", state->filePath("runtime"));
        environment.insert("TMPDIR", state->filePath("tmp"));
    }
    void cleanup()
    {
        for (QProcess& process : processes) {
            process.kill(); // also ends a stopped process
            QVERIFY(process.state() == QProcess::NotRunning || process.waitForFinished(30000));
        }
        processes.clear();
        removeSharedMemoryOf(started);
        started.clear();
    }

    // Round 0 starts ten at once; every later one kills the first instance (SIGKILL: its lock,
    // socket and shared memory stay behind; in round 2 its lock file is emptied, as by a crash
    // while it was written) and starts five at once. One of them runs as the first instance; the
    // others, and a later start, hand over (-1, 255 in the shell), the first a "raise".
    void burstsLeaveOneFirst()
    {
        QProcess* first = nullptr;
        for (int round = 0; round <= 4; ++round) {
            if (first) {
                const QString lock = lockFileOf(first->processId());
                first->kill();
                QVERIFY(first->waitForFinished(30000) && (round != 2 || QFile::resize(lock, 0)));
            }
            QList<QProcess*> burst;
            for (int i = round == 0 ? 0 : 5; i < 10; ++i)
                burst << start({"-C", "single.xml"});
            const auto ended = [&] { // their exit codes, a crash as 1000 more
                QString codes;
                for (QProcess* process : burst) {
                    if (process->state() != QProcess::NotRunning)
                        first = process;
                    else
                        codes += QString(" %1").arg(process->exitCode()
                                                    + 1000 * process->exitStatus());
                }
                return codes;
            };
            const QString handedOver = QString(" 255").repeated(burst.size() - 1);
            (void)QTest::qWaitFor([&] { return ended().size() >= handedOver.size(); }, 60000);
            QCOMPARE(ended(), handedOver);
            const QString file = path(QStringLiteral("round%1.csv").arg(round));
            QVERIFY(QFile::copy(path("other.csv"), file) && handsOver(file));
            QCOMPARE(first->state(), QProcess::Running);
            QCOMPARE(windows(), round + 1);
        }
        QVERIFY(log().contains("handleMessage: raise requested"));
    }

    // Later instances hand their files over while the first one is still loading its plug-ins:
    // each acknowledged request reaches the window once it is there, in the order of the requests.
    void requestsDuringStartUpAreDelivered()
    {
        configure("holding.xml",
                  "tst_SingleInstance-holding-"
                      + QString::number(QCoreApplication::applicationPid()),
                  "<plugin><library>Holder</library><configuration><holdUntil>" + path("release")
                      + "</holdUntil></configuration></plugin>");
        start({"-C", "holding.xml"});
        QTRY_VERIFY_WITH_TIMEOUT(log().contains("test: Holder holding"), 60000);
        QString loaded = "inventory window shown"; // what the log shows, in this order
        for (int i = 1; i <= 3; ++i) {
            const QString file = path(QStringLiteral("request%1.csv").arg(i));
            QVERIFY(QFile::copy(path("other.csv"), file));
            QProcess* later = start({"-C", "holding.xml", file});
            QVERIFY(later->waitForFinished(30000));
            QCOMPARE(later->exitCode(), 255); // acknowledged
            loaded += ".*loadFile: 1 items from " + QRegularExpression::escape(file);
        }
        QVERIFY(!log().contains("test: Holder released"));
        writeFile(path("release"), "");
        const QRegularExpression inOrder(loaded, QRegularExpression::DotMatchesEverythingOption);
        QTRY_VERIFY_WITH_TIMEOUT(inOrder.match(log()).hasMatch(), 60000);
    }

    void lock_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("runtimeFolder"); // empty: the test's own
        QTest::addColumn<QString>("temporaryFolder");
        const QString pid = QString::number(QCoreApplication::applicationPid());
        QTest::newRow("slashes") << "tst/Single/Instance-" + pid << QString() << QString();
        QTest::newRow("200 characters") << QString(200, 'i') + pid << QString() << QString();
        QTest::newRow("blanks and umlauts")
            << "tst Single Ünstance " + pid << QString() << QString();
        // As a missing folder is to a user who may not write to the root folder.
        QTest::newRow("temporary folder not writable") << "tst-" + pid << QString() << "/proc/sys";
        // No instance can tell whether it is the first: it says so at once.
        QTest::newRow("no folder can hold a lock")
            << "tst-" + pid << path("plain/runtime") << "/proc/sys";
    }
    // The first instance runs with its lock in the runtime folder; a later one hands over.
    void lock()
    {
        QFETCH(QString, id);
        QFETCH(QString, runtimeFolder);
        QFETCH(QString, temporaryFolder);
        configure("id.xml", id);
        writeFile(path("plain"), "");
        if (!runtimeFolder.isEmpty())
            environment.insert("XDG_RUNTIME_DIR", runtimeFolder);
        if (!temporaryFolder.isEmpty())
            environment.insert("TMPDIR", temporaryFolder);
        QProcess* first = start({"-C", "id.xml"});
        if (!runtimeFolder.isEmpty()) {
            QVERIFY(!runsFirst(first, 1, 5000));
            QCOMPARE(first->exitCode(), 254); // -2
            QVERIFY(first->readAllStandardError().toLower().contains("lock"));
            QCOMPARE(windows(), 0);
            return;
        }
        QVERIFY(runsFirst(first, 1));
        QVERIFY(handsOver(path("other.csv"), "id.xml"));
        QVERIFY(QFile::exists(lockFileOf(first->processId())));
    }

    // The first instance stops answering (SIGSTOP), a second one starts and waits for it; when the
    // first dies, the second finds the lock stale and runs as the first instance.
    void waitingInstanceTakesOverFromADeadHolder()
    {
        QProcess* first = start({"-C", "single.xml"});
        QVERIFY(runsFirst(first, 1));
        QCOMPARE(signalProcess(first->processId(), SIGSTOP), 0);
        QProcess* second = start({"-C", "single.xml"});
        QByteArray said; // it reads its configuration just before it looks for the first instance
        QTRY_VERIFY_WITH_TIMEOUT(
            (said += second->readAllStandardError()).contains("initialize: Opening"), 30000);
        // Nobody answers it, and it does not give up within the time it tries to reach the first.
        QVERIFY(!second->waitForFinished(3000));
        first->kill();
        QVERIFY(runsFirst(second, 2));
        QVERIFY(handsOver(path("other.csv")));
    }

    // Another user's first start is the first instance of that user: it closes by itself (0).
    void otherUserGetsAFirstInstanceOfTheirOwn()
    {
        if (::geteuid() != 0 || QStandardPaths::findExecutable("setpriv").isEmpty())
            QSKIP("needs root and setpriv to start the demo as another user");
        environment = QProcessEnvironment::systemEnvironment(); // folders both users can reach
        QVERIFY(runsFirst(start({"-C", "single.xml"}), 1));
        QProcess* other = start(
            {"-C", "single.xml"}, 500,
            {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", path("corvane-demo")});
        QVERIFY(other->waitForFinished(60000));
        QCOMPARE(other->exitCode(), 0);
    }
};

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
