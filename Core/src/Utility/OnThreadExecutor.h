#pragma once

#include "CoreExport.h"

#include <QMutex>
#include <QObject>
#include <QWaitCondition>

#include <exception>
#include <functional>

class QThread;

namespace corvane {
namespace base {
namespace core {
namespace utility {

/**
 * Runs a function on a given thread and blocks the caller until it has run there; an
 * exception thrown by the function is rethrown in the caller, as the same type. The target
 * thread must run an event loop. Called on the target thread itself, the function runs at
 * once. Calls from several threads on one executor run one after the other.
 *
 *     OnThreadExecutor executor([&] { model->reload(); }, model->thread());
 *     executor.execute();
 *
 * The executor lives in the target thread: delete it there (deleteLater()) or after that
 * thread has finished.
 */
class CORE_EXPORT OnThreadExecutor : public QObject
{
    Q_OBJECT

public:
    /// An executor of function on thread; the executor moves to thread.
    OnThreadExecutor(std::function<void()> function, QThread* thread);

    /// Runs the function on the thread and returns when it has run; rethrows its exception.
    void execute();

signals:
    /// Hands the function to the thread's event loop; emitted by execute().
    void signalExecute();

public slots:
    /// Runs the function on the thread and wakes the waiting caller.
    void slotExecute();

private:
    std::function<void()> function;
    QThread* thread;
    QWaitCondition condition;
    QMutex mutex;
    std::exception_ptr exception;
    QMutex callMutex; // one execute() at a time: a wake-up must reach its own caller
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
