#include "QtProxies/FileProxyFactory.h"
#include "QtProxies/IFileProxy.h"
#include "QtProxies/IProcessProxy.h"
#include "QtProxies/ProcessProxyFactory.h"
#include "QtProxies/TimerProxy.h"
#include "Utility/OnThreadExecutor.h"

#include "HelperProcess.h"
#include "TestFiles.h"

#include <QtTest>

using namespace corvane::base::core;
using corvane::base::core::utility::OnThreadExecutor;

// The proxies' and the executor's internal checks report a broken one as "ASSERT: ...".
std::atomic<int> assertionReports {0};
QtMessageHandler previousHandler = nullptr;

class tst_TimerProxy : public QObject
{
    Q_OBJECT

    QThread target; // the executor's

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules("default.debug=false"); // the executor traces each step
        previousHandler = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
                assertionReports += text.startsWith("ASSERT") ? 1 : 0;
                previousHandler(type, context, text);
            });
        target.start();
    }
    void cleanupTestCase()
    {
        target.quit();
        QVERIFY(target.wait(60000));
        QCOMPARE(assertionReports.load(), 0); // no check failed in any use above
    }

    // An asynchronous timer fires on its own thread, which stop() and destruction end.
    void firesOnItsThread()
    {
        for (const bool asynchronous : {false, true}) {
            std::atomic<int> timeouts {0};
            std::atomic<QThread*> firedOn {nullptr};
            std::unique_ptr<TimerProxy> timer(asynchronous ? TimerProxy::createAsynchronousTimer()
                                                           : TimerProxy::createSynchronousTimer());
            const auto record = [&] {
                ++timeouts, firedOn = QThread::currentThread();
            };
            connect(timer.get(), &TimerProxy::timeout, this, record, Qt::DirectConnection);
            timer->setInterval(5);
            timer->start();
            QTRY_VERIFY_WITH_TIMEOUT(timeouts >= 2 && timer->isActive(), 5000);
            timer->stop();
            QCOMPARE(firedOn.load() == QThread::currentThread(), !asynchronous);
            QCOMPARE(firedOn.load()->isFinished(), asynchronous);
            const int stopped = timeouts;
            timer->setSingleShot(true);
            timer->start(5);
            QTRY_COMPARE_WITH_TIMEOUT(int(timeouts), stopped + 1, 5000);
            timer->start(5);
            QSignalSpy finished(firedOn.load(), &QThread::finished);
            timer.reset(); // while running: stops the timer and joins the thread first
            QCOMPARE(finished.count(), int(asynchronous));
        }
    }

    // A proxy built from parts that do not belong together reports the broken condition.
    void invalidConstructionIsReported_data()
    {
        QTest::addColumn<int>("variant");
        QTest::addColumn<QString>("assertion");
        QTest::newRow("no timer") << 0 << "timer_";
        QTest::newRow("timer not a child of the thread")
            << 1 << "!thread_ || timer_->parent() == thread_";
        QTest::newRow("thread with a parent") << 2 << "!thread_ || !thread_->parent()";
    }
    void invalidConstructionIsReported()
    {
        QFETCH(int, variant);
        QFETCH(QString, assertion);
        QObject owner;
        // The proxy deletes the thread it is given (and so a timer that is its child).
        QThread* thread = variant == 0 ? nullptr : new QThread(variant == 2 ? &owner : nullptr);
        std::unique_ptr<QTimer> strayTimer(variant == 1 ? new QTimer : nullptr);
        QTimer* timer = variant == 0 ? nullptr
            : variant == 1           ? strayTimer.get()
                                     : new QTimer(thread);
        QTest::ignoreMessage(QtCriticalMsg,
                             QRegularExpression("^ASSERT: \""
                                                + QRegularExpression::escape(assertion)
                                                + "\" in file Core/src/QtProxies/TimerProxy.cpp, "
                                                  "line \\d+$"));
        TimerProxy proxy(timer, thread);
        QVERIFY(!proxy.isActive());
        assertionReports -= 1; // the one expected here
    }

    // A running proxy deleted at an awkward moment, in a helper process that must end cleanly.
    void deletionAtAnAwkwardMomentIsClean()
    {
        for (const QString scenario : {"synchronous", "asynchronous"}) {
            const HelperRun run
                = runHelper(QCoreApplication::applicationDirPath() + "/TimerDeleter", {scenario});
            QVERIFY2(run.exitedCleanly(), qPrintable(run.report()));
            QCOMPARE(run.out, QByteArray("deleted\nclean end\n"));
        }
    }

    // A file copied, renamed and linked through a proxy reads back as lines.
    void fileProxy()
    {
        QTemporaryDir folder;
        QObject parent;
        writeFile(folder.filePath("a"), "a\r\n\nb");
        IFileProxy* file = FileProxyFactory::createFileProxy(folder.filePath("a"), &parent);
        QVERIFY(file->copy(folder.filePath("b")) && file->rename(folder.filePath("c")));
        QVERIFY(file->link(folder.filePath("d"))
                && file->open(QIODevice::ReadOnly | QIODevice::Text));
        QCOMPARE(file->readLines(), QStringList({"a", "", "b"}));
        QVERIFY(file->remove() && !file->exists() && file->write("x") == -1);
    }

    // The process's signals arrive through the proxy: states and start in order, output, end.
    void processSignalsAreRelayed()
    {
        std::unique_ptr<IProcessProxy> owner(ProcessProxyFactory::createProcessProxy(nullptr));
        IProcessProxy* process = owner.get();
        QStringList seen;
        connect(process, &IProcessProxy::started, [&] { seen << "started"; });
        connect(process, &IProcessProxy::readyReadStandardOutput, [&] { seen << "out"; });
        connect(process, &IProcessProxy::readyReadStandardError, [&] { seen << "err"; });
        connect(process, &IProcessProxy::stateChanged, [&](int v) { seen << QString::number(v); });
        connect(process, &IProcessProxy::finished, [&](int v) { seen << QString::number(v); });
        connect(process, &IProcessProxy::errorOccurred, [&] { seen << "error"; });
        process->start("sh", {"-c", "echo out; echo err >&2; exit 3"});
        QTRY_VERIFY_WITH_TIMEOUT(seen.contains("3"), 30000);
        process->start("/nonexistent/program", QStringList());
        QTRY_VERIFY_WITH_TIMEOUT(seen.contains("error"), 30000);
        QVERIFY(seen.removeAll("out") > 0 && seen.removeAll("err") > 0);
        QCOMPARE(seen.join(' '), "1 2 started 0 3 1 0 error");
    }

    // Runs on the target thread; what it throws there is thrown again here, once.
    void executorRunsThereAndHandsBackExceptions()
    {
        QList<QThread*> ranOn;
        const auto run = [&] {
            ranOn << QThread::currentThread();
            if (ranOn.size() == 1) {
                throw std::runtime_error("broken on the target");
            }
        };
        OnThreadExecutor executor(run, &target);
        QVERIFY_EXCEPTION_THROWN(executor.execute(), std::runtime_error);
        executor.execute();
        QCOMPARE(ranOn, QList<QThread*>({&target, &target}));
        QVERIFY_EXCEPTION_THROWN(OnThreadExecutor([] { throw 42; }, &target).execute(), int);
        OnThreadExecutor empty(std::function<void()>(), &target);
        QSignalSpy handedOver(&empty, &OnThreadExecutor::signalExecute);
        QVERIFY_EXCEPTION_THROWN(empty.execute(), std::bad_function_call);
        QCOMPARE(handedOver.count(), 1);
        // The target's event loop is busy with the outer call: only a direct call can finish.
        OnThreadExecutor inner([&] { ranOn.clear(); }, &target);
        OnThreadExecutor([&] { inner.execute(); }, &target).execute();
        QVERIFY(ranOn.isEmpty());
    }
};

QTEST_MAIN(tst_TimerProxy)
#include "tst_TimerProxy.moc"
