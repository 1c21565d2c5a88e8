#include "Utility/OnThreadExecutor.h"

#include <QDebug>
#include <QMutexLocker>
#include <QThread>

namespace corvane {
namespace base {
namespace core {
namespace utility {

OnThreadExecutor::OnThreadExecutor(std::function<void()> function, QThread* thread)
    : function(std::move(function)), thread(thread)
{
    moveToThread(thread);
    connect(this, &OnThreadExecutor::signalExecute, this, &OnThreadExecutor::slotExecute,
            Qt::QueuedConnection);
}

// The caller holds the mutex from before the signal until its wait releases it, and the slot
// takes it first: the slot's wake-up can therefore only come once the caller waits.
void OnThreadExecutor::execute()
{
    if (QThread::currentThread() == thread) {
        function(); // an empty function throws std::bad_function_call here too
        return;
    }
    QMutexLocker call(&callMutex);
    QMutexLocker locker(&mutex);
    exception = nullptr;
    emit signalExecute();
    qDebug() << "execute" << QThread::currentThread();
    qDebug() << "Going to sleep..." << QThread::currentThread();
    condition.wait(&mutex);
    qDebug() << "Woke up" << QThread::currentThread();
    const std::exception_ptr caught = exception;
    locker.unlock();
    if (caught) {
        qDebug("Rethrowing exception");
        std::rethrow_exception(caught);
    }
}

void OnThreadExecutor::slotExecute()
{
    QMutexLocker locker(&mutex);
    qDebug() << "---> Executing on " << QThread::currentThread();
    try {
        function();
    } catch (const std::exception& e) {
        qDebug() << "Caught exception:" << e.what();
        exception = std::current_exception();
    } catch (...) {
        qDebug("Caught exception unknown exception");
        exception = std::current_exception();
    }
    qDebug() << "<--- Done Executing on " << QThread::currentThread();
    qDebug() << "Waking up on:" << QThread::currentThread();
    condition.wakeAll();
    qDebug() << "Done Waking up on:" << QThread::currentThread();
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
