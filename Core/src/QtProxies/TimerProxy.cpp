#include "QtProxies/TimerProxy.h"

#include "Logging/AssertionReport.h"

#include <QCoreApplication>
#include <QDebug>
#include <QThread>
#include <QTimer>

namespace corvane {
namespace base {
namespace core {

namespace {

void check(bool condition, const char* text, int line)
{
    business::AssertionReport::check(condition, text, "Core/src/QtProxies/TimerProxy.cpp", line);
}

} // namespace

TimerProxy* TimerProxy::createSynchronousTimer()
{
    auto* timer = new QTimer();
    auto* proxy = new TimerProxy(timer, nullptr);
    timer->setParent(proxy);
    return proxy;
}

// The thread object is moved into its own thread, and its child timer with it: the timer then
// fires on that thread.
TimerProxy* TimerProxy::createAsynchronousTimer()
{
    auto* thread = new QThread();
    auto* timer = new QTimer(thread);
    auto* proxy = new TimerProxy(timer, thread);
    thread->moveToThread(thread);
    return proxy;
}

TimerProxy::TimerProxy(QTimer* timer, QThread* thread) : timer_(timer), thread_(thread)
{
    check(timer_ != nullptr, "timer_", __LINE__);
    check(!thread_ || (timer_ != nullptr && timer_->parent() == thread_),
          "!thread_ || timer_->parent() == thread_", __LINE__);
    check(!thread_ || !thread_->parent(), "!thread_ || !thread_->parent()", __LINE__);
    check(!thread_ || !thread_->isRunning(), "!thread_ || !thread_->isRunning()", __LINE__);
    if (timer_ != nullptr) {
        connect(timer_, &QTimer::timeout, this, &ITimerProxy::timeout, Qt::DirectConnection);
    }
}

// A proxy may go on a thread that is not its timer's: the timer is then left to its own thread
// to delete, and an asynchronous timer's thread, when the proxy goes inside its own timeout(),
// to the application's thread, since no thread can wait for or delete itself.
TimerProxy::~TimerProxy()
{
    if (timer_ == nullptr) {
        return;
    }
    QThread* const current = QThread::currentThread();
    if (thread_ == nullptr && timer_->thread() != current) {
        disconnect(timer_, nullptr, this, nullptr);
        timer_->setParent(nullptr);
        timer_->deleteLater();
        return;
    }
    if (thread_ != nullptr && thread_ == current) {
        timer_->stop();
        disconnect(timer_, nullptr, this, nullptr);
        thread_->quit();
        if (QCoreApplication::instance() != nullptr) {
            thread_->moveToThread(QCoreApplication::instance()->thread());
            connect(thread_, &QThread::finished, thread_, &QObject::deleteLater);
        }
        return;
    }
    onTimerThread([this] { timer_->stop(); });
    stopThread();
    delete thread_;
}

void TimerProxy::setInterval(int msec)
{
    onTimerThread([this, msec] { timer_->setInterval(msec); });
}

bool TimerProxy::isActive() const
{
    return timer_ != nullptr && timer_->isActive();
}

void TimerProxy::setSingleShot(bool singleShot)
{
    onTimerThread([this, singleShot] { timer_->setSingleShot(singleShot); });
}

bool TimerProxy::isSingleShot() const
{
    return timer_ != nullptr && timer_->isSingleShot();
}

void TimerProxy::start(int msec)
{
    startThread();
    onTimerThread([this, msec] { timer_->start(msec); });
}

void TimerProxy::start()
{
    startThread();
    onTimerThread([this] { timer_->start(); });
}

void TimerProxy::stop()
{
    onTimerThread([this] { timer_->stop(); });
    stopThread();
}

void TimerProxy::startThread()
{
    if (thread_ != nullptr && !thread_->isRunning()) {
        thread_->start(QThread::InheritPriority);
    }
}

void TimerProxy::stopThread()
{
    if (thread_ != nullptr) {
        thread_->quit();
        thread_->wait();
    }
}

void TimerProxy::onTimerThread(const std::function<void()>& work)
{
    if (timer_ == nullptr) {
        return; // reported at construction
    }
    QThread* owner = timer_->thread();
    if (owner == QThread::currentThread() || thread_ == nullptr || !thread_->isRunning()) {
        work();
        return;
    }
    QMetaObject::invokeMethod(timer_, work, Qt::BlockingQueuedConnection);
}

} // namespace core
} // namespace base
} // namespace corvane
