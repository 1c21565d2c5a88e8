#include "Utility/OnThreadExecutor.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <stdexcept>

using corvane::base::core::utility::OnThreadExecutor;

namespace {
void silence(QtMsgType, const QMessageLogContext&, const QString&) { }
} // namespace

class tst_OnThreadExecutor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void runsOnTheTargetThread();
    void exceptionArrivesAsTheSameType();
    void callOnTheTargetThreadRunsAtOnce();
    void emptyFunctionFailsOnTheTargetThread();
    void manyCallersNeverLoseACall();

private:
    std::unique_ptr<QThread> target;
};

void tst_OnThreadExecutor::initTestCase()
{
    qInstallMessageHandler(silence); // the executor traces every step at debug level
}

void tst_OnThreadExecutor::init()
{
    target = std::make_unique<QThread>();
    target->start();
}

void tst_OnThreadExecutor::cleanup()
{
    target->quit();
    target->wait();
    target.reset();
}

void tst_OnThreadExecutor::runsOnTheTargetThread()
{
    QThread* ranOn = nullptr;
    OnThreadExecutor executor([&] { ranOn = QThread::currentThread(); }, target.get());
    executor.execute();
    QCOMPARE(ranOn, target.get());
}

void tst_OnThreadExecutor::exceptionArrivesAsTheSameType()
{
    int calls = 0;
    OnThreadExecutor executor(
        [&] {
            if (++calls == 1) {
                throw std::runtime_error("broken on the target");
            }
        },
        target.get());
    try {
        executor.execute();
        QFAIL("no exception");
    } catch (const std::runtime_error& e) {
        QCOMPARE(QByteArray(e.what()), QByteArray("broken on the target"));
    }
    executor.execute(); // the next run starts without the old exception
    QCOMPARE(calls, 2);

    OnThreadExecutor other([] { throw 42; }, target.get());
    QVERIFY_EXCEPTION_THROWN(other.execute(), int);
}

void tst_OnThreadExecutor::callOnTheTargetThreadRunsAtOnce()
{
    // The target thread's event loop is busy inside this call: only a direct call can finish.
    bool ran = false;
    OnThreadExecutor inner([&] { ran = true; }, target.get());
    OnThreadExecutor outer([&] { inner.execute(); }, target.get());
    outer.execute();
    QVERIFY(ran);
}

void tst_OnThreadExecutor::emptyFunctionFailsOnTheTargetThread()
{
    OnThreadExecutor executor(std::function<void()>(), target.get());
    QSignalSpy handedOver(&executor, &OnThreadExecutor::signalExecute);
    QVERIFY_EXCEPTION_THROWN(executor.execute(), std::bad_function_call);
    QCOMPARE(handedOver.count(), 1);
}

// Several threads share one target thread, each through an executor of its own and also all
// through one shared executor; every call's result must arrive exactly once.
void tst_OnThreadExecutor::manyCallersNeverLoseACall()
{
    constexpr int callers = 8;
    constexpr int callsPerCaller = 1250; // 10,000 calls
    std::atomic<int> sharedRuns {0};
    OnThreadExecutor shared([&] { ++sharedRuns; }, target.get());
    QVector<qint64> sums(callers, 0);
    QList<QThread*> threads;
    for (int c = 0; c < callers; ++c) {
        threads << QThread::create([&, c] {
            int input = 0;
            int output = -1;
            OnThreadExecutor own([&] { output = input * 2; }, target.get());
            for (int i = 1; i <= callsPerCaller; ++i) {
                input = i;
                own.execute();
                sums[c] += output; // each result read exactly once, right after its call
                if (i % 10 == 0) {
                    shared.execute();
                }
            }
            QMetaObject::invokeMethod(
                &own, [] {}, Qt::BlockingQueuedConnection); // drain
        });
        threads.last()->start();
    }
    for (QThread* thread : threads) {
        QVERIFY(thread->wait(300000));
        delete thread;
    }
    const qint64 expected = qint64(callsPerCaller) * (callsPerCaller + 1); // 2 * sum(1..n)
    for (qint64 sum : sums) {
        QCOMPARE(sum, expected);
    }
    QCOMPARE(sharedRuns.load(), callers * callsPerCaller / 10);
}

QTEST_MAIN(tst_OnThreadExecutor)
#include "tst_OnThreadExecutor.moc"
