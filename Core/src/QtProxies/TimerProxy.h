#pragma once

#include "QtProxies/ITimerProxy.h"

#include <functional>

class QThread;
class QTimer;

namespace corvane {
namespace base {
namespace core {

/**
 * A QTimer behind ITimerProxy. A synchronous timer fires in the creating thread's event loop;
 * an asynchronous one fires on a thread of its own, started on demand by start() and ended by
 * stop() or the destructor, so timeout() is emitted on that thread.
 */
class CORE_EXPORT TimerProxy : public ITimerProxy
{
    Q_OBJECT

public:
    /// The caller owns the proxy.
    static TimerProxy* createSynchronousTimer();
    /// The caller owns the proxy; its thread starts with the first start().
    static TimerProxy* createAsynchronousTimer();

    /// A proxy over timer. With a thread (the timer's parent, not running yet), the timer fires on
    /// that thread and the proxy owns the thread; without one it fires where it lives.
    TimerProxy(QTimer* timer, QThread* thread);
    /// Stops the timer and ends (joins) its thread.
    ~TimerProxy() override;

    void setInterval(int msec) override;
    bool isActive() const override;
    void setSingleShot(bool singleShot) override;
    bool isSingleShot() const override;
    void start(int msec) override;
    void start() override;
    /// Stops the timer, then ends its thread (if any) and waits for it.
    void stop() override;

    /// Starts the timer's thread, if it has one that does not run.
    void startThread();
    /// Ends the timer's thread, if it has one, and waits for it.
    void stopThread();

private:
    Q_DISABLE_COPY(TimerProxy)

    /// Runs work where the timer lives: directly, or blocking on the timer's running thread.
    void onTimerThread(const std::function<void()>& work);

    QTimer* timer_;
    QThread* thread_;
};

} // namespace core
} // namespace base
} // namespace corvane
