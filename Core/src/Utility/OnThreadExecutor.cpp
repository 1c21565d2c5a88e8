#include "Utility/OnThreadExecutor.h"

#include "Logging/LogMessageHandler.h"

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

namespace {

// Each step is traced at debug level. Building a trace costs more than the hand-over itself, so
// the traces are built only when a debug line of this file would be written at all.
bool traced()
{
    return logging::isMessageEnabled(QtDebugMsg, __FILE__);
}

} // namespace

// The caller holds the mutex from before the signal until its wait releases it, and the slot
// takes it first: the slot's wake-up can therefore only come once the caller waits.
void OnThreadExecutor::execute()
{
    if (QThread::currentThread() == thread) {
        function(); // an empty function throws std::bad_function_call here too
        return;
    }
    const bool tracing = traced();
    QMutexLocker call(&callMutex);
    QMutexLocker locker(&mutex);
    exception = nullptr;
    emit signalExecute();
    if (tracing) {
        qDebug() << "execute" << QThread::currentThread();
        qDebug() << "Going to sleep..." << QThread::currentThread();
    }
    condition.wait(&mutex);
    if (tracing) {
        qDebug() << "Woke up" << QThread::currentThread();
    }
    const std::exception_ptr caught = exception;
    locker.unlock();
    if (caught) {
        if (tracing) {
            qDebug("Rethrowing exception");
        }
        std::rethrow_exception(caught);
    }
}

void OnThreadExecutor::slotExecute()
{
    const bool tracing = traced();
    QMutexLocker locker(&mutex);
    if (tracing) {
        qDebug() << "---> Executing on " << QThread::currentThread();
    }
    try {
        function();
    } catch (const std::exception& e) {
        if (tracing) {
            qDebug() << "Caught exception:" << e.what();
        }
        exception = std::current_exception();
    } catch (...) {
        if (tracing) {
            qDebug("Caught exception unknown exception");
        }
        exception = std::current_exception();
    }
    if (tracing) {
        qDebug() << "<--- Done Executing on " << QThread::currentThread();
        qDebug() << "Waking up on:" << QThread::currentThread();
    }
    condition.wakeAll();
    if (tracing) {
        qDebug() << "Done Waking up on:" << QThread::currentThread();
    }
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
