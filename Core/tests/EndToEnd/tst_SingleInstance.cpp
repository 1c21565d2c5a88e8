#include "Processes.h"

#include <QCryptographicHash>
#include <QLocalServer>
#include <QSharedMemory>

#include <list>
#include <pwd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

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
        // A state folder each, over all test functions: an instance killed while it starts its
        // plug-ins must not make a later one ask what to do about them.
        static int starts = 0;
        processEnvironment.insert("XDG_STATE_HOME", path("state/" + QString::number(++starts)));
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
        const bool runs
            = QTest::qWaitFor(
                  [&] { return windows() == count || process->state() == QProcess::NotRunning; },
                  timeoutMs)
            && process->state() == QProcess::Running;
        if (!runs) // for the failure that follows; the output stays for the test to read
            qWarning().noquote() << "not the first instance: running"
                                 << (process->state() == QProcess::Running) << "exit"
                                 << process->exitCode() << "windows" << windows();
        return runs;
    }

    // The name under which the guard's files once lay in the shared temporary folder, without a
    // folder of the user's own: what another user could predict and plant.
    QString sharedName(const QString& id, const QString& suffix) const
    {
        const QByteArray digest = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha1);
        return id + '-' + digest.toHex().left(16) + '-' + QString::number(::getuid()) + suffix;
    }

    // The id of a user that plays the attacker, created when missing; 0 when there is none.
    static uid_t attacker()
    {
        if (::geteuid() == 0 && !::getpwnam("corvane-tst")) {
            run("useradd",
                {"--system", "--no-create-home", "--shell", "/usr/sbin/nologin", "corvane-tst"});
        }
        const passwd* account = ::getpwnam("corvane-tst");
        return ::geteuid() == 0 && account ? account->pw_uid : 0;
    }

    static bool chownTo(const QString& file, uid_t user)
    {
        return ::lchown(QFile::encodeName(file).constData(), user, user) == 0;
    }

    // The socket the first instance listens on, in the folder.
    static QString socketIn(const QString& folder)
    {
        for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::System | QDir::Files))
            if (file.fileName().endsWith(".socket"))
                return file.filePath();
        return "none";
    }

    // Connections that send nothing, opened without waiting; the descriptors of those that the
    // system took.
    static QList<int> idleConnections(const QString& socket, int count)
    {
        QList<int> descriptors;
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(socket).constData(), sizeof address.sun_path);
        for (int i = 0; i < count; ++i) {
            const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0);
            if (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
                || errno == EAGAIN || errno == EINPROGRESS)
                descriptors << descriptor;
            else
                ::close(descriptor);
        }
        return descriptors;
    }

    static qint64 peakMemoryKiB(qint64 pid)
    {
        const QByteArray status = readFile(QStringLiteral("/proc/%1/status").arg(pid));
        const int at = status.indexOf("VmHWM:");
        return at < 0 ? -1 : status.mid(at + 6).trimmed().split(' ').value(0).toLongLong();
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
        // The build tree may lie in a folder that only its owner enters (as /root): the other
        // user gets the library from the demo's copy.
        QVERIFY(QDir(folder.path()).mkpath("lib"));
        for (const QFileInfo& library :
             QDir(DEMO_FOLDER).entryInfoList({"libCorvaneCore.so*"}, QDir::Files))
            QVERIFY(QFile::copy(library.filePath(), path("lib/" + library.fileName())));
        environment.insert("LD_LIBRARY_PATH", path("lib"));
        QVERIFY(runsFirst(start({"-C", "single.xml"}), 1));
        QProcess* other = start(
            {"-C", "single.xml"}, 500,
            {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", path("corvane-demo")});
        QVERIFY(other->waitForFinished(60000));
        QCOMPARE(other->exitCode(), 0);
    }
    // Without a runtime folder of its own the guard keeps its files in a folder of the user's
    // own in the shared temporary folder. What another user plants in the shared folder is
    // never followed nor used, a folder that is not the user's own is refused (254, -2), and a
    // long runtime folder keeps the socket all the same.
    void privateFolders_data()
    {
        QTest::addColumn<QString>("attack");
        QTest::addColumn<int>("exitCode"); // of the start: 0 when it ran as the first instance
        QTest::addColumn<QString>("said"); // on standard error
        const QString own = "corvane-runtime-" + QString::number(::geteuid());
        QTest::newRow("link to a file at the lock's name") << "link" << 0 << "";
        QTest::newRow("dangling link at the lock's name") << "dangling" << 0 << "";
        QTest::newRow("lock, marker and socket squatted") << "squat" << 0 << "";
        QTest::newRow("runtime folder open to others, a link in it")
            << "open runtime" << 0 << "is not private (mode 0777 instead of 0700)";
        QTest::newRow("folder of the user's own made by another user")
            << "foreign folder" << 254 << own + " cannot be used: owned by user ";
        QTest::newRow("link in place of the folder of the user's own")
            << "linked folder" << 254 << own + " cannot be used: a symbolic link or no folder";
        QTest::newRow("runtime folder too long for the socket's usual name")
            << "long runtime" << 0 << "";
    }
    void privateFolders()
    {
        QFETCH(QString, attack);
        QFETCH(int, exitCode);
        QFETCH(QString, said);
        const uid_t other = attacker();
        if (other == 0)
            QSKIP("needs root, to create a second user who plays the attacker");
        const QString shared = state->filePath("shared"); // as /tmp is
        QVERIFY(QDir().mkdir(shared) && ::chmod(QFile::encodeName(shared), 01777) == 0);
        environment.remove("XDG_RUNTIME_DIR");
        environment.insert("TMPDIR", shared);
        const QString id
            = "tst_SingleInstance-" + QString::number(QCoreApplication::applicationPid());
        const QString planted = shared + '/' + sharedName(id, ".lock");
        const QString own = shared + "/corvane-runtime-" + QString::number(::geteuid());
        const QString victim = state->filePath("victim"), created = state->filePath("created");
        writeFile(victim, "precious\n");
        QString runtime = state->filePath("open");
        QLocalServer squatter;
        QFile squattedLock(planted);
        QSharedMemory squattedMarker;
        if (attack == "link" || attack == "dangling")
            QVERIFY(QFile::link(attack == "link" ? victim : created, planted)
                    && chownTo(planted, other));
        if (attack == "squat") {
            const QString socket = shared + '/' + sharedName(id, ".socket");
            squattedMarker.setNativeKey(socket + ".marker");
            QVERIFY(squattedLock.open(QIODevice::ReadWrite)
                    && ::flock(squattedLock.handle(), LOCK_EX) == 0 && squatter.listen(socket)
                    && squattedMarker.create(1) && chownTo(planted, other) && chownTo(socket, other)
                    && chownTo(socket + ".marker", other));
        }
        if (attack == "open runtime") {
            QVERIFY(QDir().mkdir(runtime) && ::chmod(QFile::encodeName(runtime), 0777) == 0);
            QVERIFY(QFile::link(victim, runtime + '/' + sharedName(id, ".lock")));
            environment.insert("XDG_RUNTIME_DIR", runtime);
        }
        if (attack == "foreign folder")
            QVERIFY(QDir().mkdir(own) && chownTo(own, other));
        if (attack == "linked folder")
            QVERIFY(QDir().mkdir(state->filePath("rootonly"))
                    && QFile::link(state->filePath("rootonly"), own) && chownTo(own, other));
        if (attack == "long runtime") { // 88 bytes: room for a part of the digest only
            runtime = state->path() + '/' + QString(87 - state->path().size(), 'r');
            QVERIFY(QDir().mkdir(runtime)
                    && QFile::setPermissions(runtime, QFile::Permissions(0x7000)));
            environment.insert("XDG_RUNTIME_DIR", runtime);
        }
        QProcess* first = start({"-C", "single.xml"}, 1500);
        if (attack == "long runtime")
            QVERIFY(runsFirst(first, 1) && QFileInfo::exists(socketIn(runtime)));
        QVERIFY(first->waitForFinished(60000));
        const QByteArray error = first->readAllStandardError();
        QCOMPARE(first->exitCode(), exitCode);
        QVERIFY2(error.contains(said.toUtf8()), error.right(2000));
        QCOMPARE(readFile(victim), QByteArray("precious\n"));
        QVERIFY(!QFileInfo::exists(created));
        QVERIFY(!squatter.isListening() || !squatter.waitForNewConnection(0));
        if (exitCode != 0) // nothing written into a folder that is not the user's own
            QCOMPARE(QDir(own).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System
                                         | QDir::Hidden),
                     QStringList());
    }

    void markers_data()
    {
        QTest::addColumn<bool>("noIdLeft"); // in an IPC namespace of its own, whose ids are taken
        QTest::addColumn<QString>("firstEnds"); // "killed", "closed", or empty: runs on
        QTest::newRow("no shared-memory id left") << true << "";
        QTest::newRow("first instance killed") << false << "killed";
        QTest::newRow("first instance closed") << false << "closed";
    }
    // The shared-memory marker decides nothing: without one the request is handed over all the
    // same. A marker that nobody is attached to any more goes with its instance, or is removed
    // by the next first instance when its instance was killed.
    void markers()
    {
        QFETCH(bool, noIdLeft);
        QFETCH(QString, firstEnds);
        const auto hasMarkerOf = [](qint64 pid) {
            QSet<qint64> creators;
            for (const QByteArray& row : readFile("/proc/sysvipc/shm").split('\n'))
                creators << row.simplified().split(' ').value(4).toLongLong();
            return creators.contains(pid);
        };
        if (!noIdLeft) {
            QProcess* first = start({"-C", "single.xml"}, firstEnds == "closed" ? 5000 : 60000);
            const qint64 pid = first->processId();
            QVERIFY(runsFirst(first, 1) && hasMarkerOf(pid));
            if (firstEnds == "killed") {
                first->kill();
                QVERIFY(first->waitForFinished(30000) && runsFirst(start({"-C", "single.xml"}), 2));
            } else {
                QVERIFY(first->waitForFinished(60000));
                QCOMPARE(first->exitCode(), 0);
            }
            QVERIFY(!hasMarkerOf(pid));
            return;
        }
        if (::geteuid() != 0 || QStandardPaths::findExecutable("nsenter").isEmpty()
            || QStandardPaths::findExecutable("ipcmk").isEmpty())
            QSKIP("needs root, unshare, nsenter and ipcmk for an IPC namespace of its own");
        QProcess* first = start({"-C", "single.xml"}, 60000,
                                {"unshare", "--ipc", "--", "sh", "-c",
                                 "echo 1 > /proc/sys/kernel/shmmni && ipcmk -M 1 > /dev/null && "
                                 "exec \"$0\" \"$@\"",
                                 path("corvane-demo")});
        QVERIFY(runsFirst(first, 1));
        QVERIFY(first->readAllStandardError().contains("start: no marker for "));
        QProcess* later
            = start({"-C", "single.xml", path("other.csv")}, 60000,
                    {"nsenter", QStringLiteral("--ipc=/proc/%1/ns/ipc").arg(first->processId()),
                     "--", path("corvane-demo")});
        QVERIFY(later->waitForFinished(30000));
        QCOMPARE(later->exitCode(), 255);
        QTRY_VERIFY(log().contains("loadFile: 1 items from " + path("other.csv").toUtf8()));
    }

    void requestToAStoppedInstance_data()
    {
        QTest::addColumn<int>("stoppedMs");
        QTest::newRow("stopped 2 s") << 2000;
        QTest::newRow("stopped 12 s, longer than a later instance tries") << 12000;
    }
    // A later instance whose request reached the stopped first instance says so (-1, 255), and
    // the request is delivered once the first instance runs again, exactly once.
    void requestToAStoppedInstance()
    {
        QFETCH(int, stoppedMs);
        QProcess* first = start({"-C", "single.xml"});
        QVERIFY(runsFirst(first, 1));
        const QString file = path("stopped.csv");
        QFile::remove(file);
        QVERIFY(QFile::copy(path("other.csv"), file));
        QCOMPARE(signalProcess(first->processId(), SIGSTOP), 0);
        const QDeadlineTimer resume(stoppedMs);
        QProcess* later = start({"-C", "single.xml", file});
        const bool endedWhileStopped = later->waitForFinished(int(resume.remainingTime()));
        QVERIFY(QTest::qWaitFor([&] { return resume.hasExpired(); }, stoppedMs + 1000));
        QCOMPARE(signalProcess(first->processId(), SIGCONT), 0);
        QVERIFY(later->state() == QProcess::NotRunning || later->waitForFinished(30000));
        QCOMPARE(later->exitCode(), 255);
        QCOMPARE(endedWhileStopped, stoppedMs > 10000);
        // A further request comes after every earlier one on its way.
        QVERIFY(handsOver(path("other.csv")));
        QCOMPARE(log().count("loadFile: 1 items from " + file.toUtf8()), 1);
        QCOMPARE(log().count("handleMessage: raise requested"), 2);
    }

    void boundedPeers_data()
    {
        QTest::addColumn<QString>("peers");
        QTest::addColumn<QString>("warning"); // in the log
        QTest::newRow("300 idle connections, few descriptors")
            << "idle"
            << "start: peer limit: out of descriptors";
        QTest::newRow("16 peers announcing 16 MiB each")
            << "flood"
            << "keepToBudget: peer limit: more than 33554440 unread bytes";
    }
    // Hostile peers of the same user neither take the first instance's socket away nor its
    // memory: a hand-over works beside them, and the log has one warning line, not one per peer.
    void boundedPeers()
    {
        QFETCH(QString, peers);
        QFETCH(QString, warning);
        // Memory given back is counted as given back under AddressSanitizer too.
        environment.insert("ASAN_OPTIONS",
                           environment.value("ASAN_OPTIONS") + ":quarantine_size_mb=1");
        QProcess* first = peers == "idle"
            ? start({"-C", "single.xml"}, 60000,
                    {"sh", "-c", "ulimit -n 48 && exec \"$0\" \"$@\"", path("corvane-demo")})
            : start({"-C", "single.xml"});
        QVERIFY(runsFirst(first, 1));
        const QString socket = socketIn(state->filePath("runtime"));
        const qint64 before = peakMemoryKiB(first->processId());
        QList<int> connections;
        if (peers == "idle") {
            connections = idleConnections(socket, 300);
            QVERIFY(connections.size() >= 100);
        } else {
            connections = idleConnections(socket, 16);
            QCOMPARE(connections.size(), 16);
            QByteArray frame;
            QDataStream(&frame, QIODevice::WriteOnly) << qint32(16 * 1024 * 1024);
            frame += QByteArray(16 * 1024 * 1024 - 1, 'x'); // never complete
            QVector<qint64> sent(16, 0);
            const QDeadlineTimer deadline(120000);
            for (bool busy = true; busy && !deadline.hasExpired();) {
                busy = false;
                for (int i = 0; i < 16; ++i) {
                    if (sent[i] < 0 || sent[i] == frame.size())
                        continue;
                    const ssize_t n = ::send(connections[i], frame.constData() + sent[i],
                                             size_t(frame.size() - sent[i]), MSG_NOSIGNAL);
                    sent[i] = n > 0 ? sent[i] + n : errno == EAGAIN ? sent[i] : -1;
                    busy = true;
                }
                QTest::qWait(1);
            }
            QVERIFY(!deadline.hasExpired());
        }
        QVERIFY(handsOver(path("other.csv")));
        QCOMPARE(socketIn(state->filePath("runtime")), socket);
        if (peers == "flood")
            QVERIFY2(peakMemoryKiB(first->processId()) - before < 128 * 1024,
                     qPrintable(QString::number(peakMemoryKiB(first->processId()) - before)));
        QVERIFY(log().contains(warning.toUtf8()));
        QVERIFY2(log().count("peer limit") <= 3, log().right(3000));
        for (const int connection : qAsConst(connections))
            ::close(connection);
    }
};

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
