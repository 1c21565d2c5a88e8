// Helper process for the timer proxy's test: deletes a running timer proxy at an awkward moment
// and lets the event loop go on for a while. "synchronous": a repeating synchronous proxy of
// the main thread is deleted from another thread. "asynchronous": a single-shot asynchronous
// proxy deletes itself in its own timeout(). Prints "deleted" once the proxy is gone and
// "clean end" when the event loop has ended; exit code 3 if the deletion never happened.

#include "QtProxies/TimerProxy.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstring>

using corvane::base::core::TimerProxy;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        return 2;
    }
    std::atomic<bool> deleted {false};
    // Once the proxy is gone the event loop runs on for many of its intervals, then ends.
    const auto endSoon = [&] {
        deleted = true;
        std::puts("deleted");
        std::fflush(stdout);
        QMetaObject::invokeMethod(
            &application, [&] { QTimer::singleShot(300, &application, &QCoreApplication::quit); },
            Qt::QueuedConnection);
    };
    QTimer::singleShot(20000, &application, &QCoreApplication::quit);

    QThread* deleter = nullptr;
    if (std::strcmp(argv[1], "synchronous") == 0) {
        TimerProxy* timer = TimerProxy::createSynchronousTimer();
        timer->start(10);
        deleter = QThread::create([timer, &endSoon] {
            delete timer;
            endSoon();
        });
        deleter->start();
    } else {
        TimerProxy* timer = TimerProxy::createAsynchronousTimer();
        timer->setSingleShot(true);
        QObject::connect(
            timer, &TimerProxy::timeout, timer,
            [timer, &endSoon] {
                delete timer;
                endSoon();
            },
            Qt::DirectConnection);
        timer->start(10);
    }
    application.exec();
    if (deleter) {
        deleter->wait(20000);
        delete deleter;
    }
    std::puts("clean end");
    return deleted ? 0 : 3;
}
