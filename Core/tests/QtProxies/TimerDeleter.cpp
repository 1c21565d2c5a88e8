// Deletes a running timer proxy from another thread ("synchronous") or in its own timeout().

#include "QtProxies/TimerProxy.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <cstdio>

using corvane::base::core::TimerProxy;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const bool synchronous = argc > 1 && QByteArray(argv[1]) == "synchronous";
    TimerProxy* timer = synchronous ? TimerProxy::createSynchronousTimer()
                                    : TimerProxy::createAsynchronousTimer();
    std::atomic<bool> deleted {false};
    const auto deleteTimer = [&] {
        delete timer;
        deleted = true;
        std::puts("deleted");
        QMetaObject::invokeMethod(
            &application, [&] { QTimer::singleShot(300, &application, &QCoreApplication::quit); });
    };
    QTimer::singleShot(20000, &application, &QCoreApplication::quit);
    std::unique_ptr<QThread> deleter(QThread::create(deleteTimer));
    timer->setSingleShot(!synchronous);
    if (!synchronous) {
        QObject::connect(timer, &TimerProxy::timeout, timer, deleteTimer, Qt::DirectConnection);
    }
    timer->start(10);
    if (synchronous) {
        deleter->start();
    }
    application.exec();
    deleter->wait(20000);
    std::puts("clean end");
    return deleted ? 0 : 3;
}
