#include "QtProxies/TimerProxy.h"

#include <QtTest>

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

void tst_TimerProxy::asynchronousTimerFiresOnItsOwnThread()
{
    std::unique_ptr<TimerProxy> timer(TimerProxy::createAsynchronousTimer());
    QThread* firedOn = nullptr;
    connect(
        timer.get(), &TimerProxy::timeout, this, [&] { firedOn = QThread::currentThread(); },
        Qt::DirectConnection);
    QSignalSpy timeouts(timer.get(), &TimerProxy::timeout);
    timer->setInterval(10);
    timer->start();
    QVERIFY(timer->isActive());
    QTRY_VERIFY_WITH_TIMEOUT(timeouts.count() >= 2, 5000);
    QVERIFY(firedOn != nullptr);
    QVERIFY(firedOn != QThread::currentThread());
}

void tst_TimerProxy::stopAndDestructionJoinTheThread()
{
    std::unique_ptr<TimerProxy> timer(TimerProxy::createAsynchronousTimer());
    QThread* thread = nullptr;
    connect(
        timer.get(), &TimerProxy::timeout, this, [&] { thread = QThread::currentThread(); },
        Qt::DirectConnection);
    QSignalSpy timeouts(timer.get(), &TimerProxy::timeout);
    timer->start(5);
    QTRY_VERIFY_WITH_TIMEOUT(thread != nullptr, 5000);
    timer->stop();
    QVERIFY(thread->isFinished());
    QVERIFY(!timer->isActive());

    timer->start(5); // a later start starts the thread again
    QTRY_VERIFY_WITH_TIMEOUT(thread->isRunning(), 5000);
    const int before = timeouts.count();
    QTRY_VERIFY_WITH_TIMEOUT(timeouts.count() > before, 5000);

    QSignalSpy finished(thread, &QThread::finished);
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

QTEST_MAIN(tst_TimerProxy)
#include "tst_TimerProxy.moc"
