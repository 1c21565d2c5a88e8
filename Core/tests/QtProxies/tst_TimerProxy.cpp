#include "QtProxies/TimerProxy.h"

#include "HelperProcess.h"

#include <QtTest>

#include <atomic>
#include <memory>

using corvane::base::core::TimerProxy;

class tst_TimerProxy : public QObject
{
    Q_OBJECT

private slots:
    void synchronousTimerFiresOnTheCreatingThread();
    void asynchronousTimerFiresOnItsOwnThread();
    void stopAndDestructionJoinTheThread();
    void invalidConstructionIsReported_data();
    void invalidConstructionIsReported();
    void deletionAtAnAwkwardMomentIsClean_data();
    void deletionAtAnAwkwardMomentIsClean();
};

void tst_TimerProxy::synchronousTimerFiresOnTheCreatingThread()
{
    std::unique_ptr<TimerProxy> timer(TimerProxy::createSynchronousTimer());
    QThread* firedOn = nullptr;
    connect(
        timer.get(), &TimerProxy::timeout, this, [&] { firedOn = QThread::currentThread(); },
        Qt::DirectConnection);
    timer->setSingleShot(true);
    QVERIFY(timer->isSingleShot());
    QSignalSpy timeouts(timer.get(), &TimerProxy::timeout);
    timer->start(10);
    QVERIFY(timer->isActive());
    QVERIFY(timeouts.wait(5000));
    QCOMPARE(firedOn, QThread::currentThread());

    timer->start(10000);
    timer->stop();
    QVERIFY(!timer->isActive());
}

// The timer of an asynchronous proxy fires on its own thread: what it records is written there
// and read here, so through atomics, and the timer is stopped before they go away.
void tst_TimerProxy::asynchronousTimerFiresOnItsOwnThread()
{
    std::atomic<int> timeouts {0};
    std::atomic<QThread*> firedOn {nullptr};
    std::unique_ptr<TimerProxy> timer(TimerProxy::createAsynchronousTimer());
    connect(
        timer.get(), &TimerProxy::timeout, this,
        [&] {
            firedOn = QThread::currentThread();
            ++timeouts;
        },
        Qt::DirectConnection);
    timer->setInterval(10);
    timer->start();
    QVERIFY(timer->isActive());
    QTRY_VERIFY_WITH_TIMEOUT(timeouts >= 2, 5000);
    timer.reset();
    QVERIFY(firedOn.load() != nullptr);
    QVERIFY(firedOn.load() != QThread::currentThread());
}

void tst_TimerProxy::stopAndDestructionJoinTheThread()
{
    std::atomic<int> timeouts {0};
    std::atomic<QThread*> thread {nullptr};
    std::unique_ptr<TimerProxy> timer(TimerProxy::createAsynchronousTimer());
    connect(
        timer.get(), &TimerProxy::timeout, this,
        [&] {
            thread = QThread::currentThread();
            ++timeouts;
        },
        Qt::DirectConnection);
    timer->start(5);
    QTRY_VERIFY_WITH_TIMEOUT(thread.load() != nullptr, 5000);
    timer->stop();
    QVERIFY(thread.load()->isFinished());
    QVERIFY(!timer->isActive());
    const int afterStop = timeouts;
    QCOMPARE(int(timeouts), afterStop); // nothing fires once stopped

    timer->start(5); // a later start starts the thread again
    QTRY_VERIFY_WITH_TIMEOUT(timeouts > afterStop, 5000);

    QSignalSpy finished(thread.load(), &QThread::finished);
    timer.reset(); // destroyed while running: stops the timer and joins the thread
    QCOMPARE(finished.count(), 1);
}

void tst_TimerProxy::invalidConstructionIsReported_data()
{
    QTest::addColumn<int>("variant");
    QTest::addColumn<QString>("assertion");
    QTest::newRow("no timer") << 0 << "timer_";
    QTest::newRow("timer not a child of the thread")
        << 1 << "!thread_ || timer_->parent() == thread_";
    QTest::newRow("thread with a parent") << 2 << "!thread_ || !thread_->parent()";
}

void tst_TimerProxy::invalidConstructionIsReported()
{
    QFETCH(int, variant);
    QFETCH(QString, assertion);
    QObject owner;
    // The proxy deletes the thread it is given (and so a timer that is its child).
    QThread* thread = variant == 0 ? nullptr : new QThread(variant == 2 ? &owner : nullptr);
    std::unique_ptr<QTimer> strayTimer(variant == 1 ? new QTimer : nullptr);
    QTimer* timer = variant == 0 ? nullptr : variant == 1 ? strayTimer.get() : new QTimer(thread);

    QTest::ignoreMessage(
        QtCriticalMsg,
        QRegularExpression(QStringLiteral("^ASSERT: \"%1\" in file "
                                          "Core/src/QtProxies/TimerProxy.cpp, line \\d+$")
                               .arg(QRegularExpression::escape(assertion))));
    TimerProxy proxy(timer, thread);
    QVERIFY(!proxy.isActive());
}

// A running proxy deleted from another thread, or from inside its own timeout(), as a one-shot
// timer that deletes itself does: the process goes on and ends cleanly.
void tst_TimerProxy::deletionAtAnAwkwardMomentIsClean_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::newRow("synchronous, deleted from another thread") << "synchronous";
    QTest::newRow("asynchronous, deleted in its own timeout") << "asynchronous";
}

void tst_TimerProxy::deletionAtAnAwkwardMomentIsClean()
{
    QFETCH(QString, scenario);
    const HelperRun run
        = runHelper(QCoreApplication::applicationDirPath() + "/TimerDeleter", {scenario});
    QVERIFY2(run.exitedCleanly(), qPrintable(run.report()));
    QCOMPARE(run.out, QByteArray("deleted\nclean end\n"));
    QVERIFY2(!run.err.contains("QThread: Destroyed while thread is still running"),
             qPrintable(run.report()));
}

QTEST_MAIN(tst_TimerProxy)
#include "tst_TimerProxy.moc"
