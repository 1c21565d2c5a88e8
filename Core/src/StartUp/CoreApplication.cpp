#include "StartUp/CoreApplication.h"

#include "Logging/LoggingManager.h"
#include "StartUp/ApplicationQuitHandler.h"
#include "StartUp/Service.h"

#include <QDebug>
#include <QMutexLocker>
#include <QScopedValueRollback>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace business {

namespace {

int signalPipe[2] = {-1, -1};

// Nothing but a write: the main thread does the rest.
void writeSignal(int number)
{
    const char byte = char(number);
    const ssize_t written = ::write(signalPipe[1], &byte, 1);
    (void)written;
}

} // namespace

CoreApplication::CoreApplication(int& argc, char** argv) : QCoreApplication(argc, argv)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) {
        throw "Can't register CTRL+c for application exit.";
    }
    signalNotifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
    connect(signalNotifier, &QSocketNotifier::activated, this, &CoreApplication::handleSignal);

    struct sigaction action = {};
    action.sa_handler = writeSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int number : {SIGTERM, SIGINT, SIGHUP}) {
        if (::sigaction(number, &action, nullptr) != 0) {
            throw "Can't register CTRL+c for application exit.";
        }
    }
}

CoreApplication::~CoreApplication()
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (int number : {SIGTERM, SIGINT, SIGHUP}) {
        ::sigaction(number, &action, nullptr);
    }
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe[0] = signalPipe[1] = -1;
}

bool CoreApplication::event(QEvent* event)
{
    if (event->type() == QEvent::Quit && !quitting) {
        QMutexLocker locker(&mutex);
        const QScopedValueRollback<bool> handling(quitting, true);
        Service::notify(QStringLiteral("STOPPING=1"));
        ApplicationQuitHandler::takeDownManagers(this);
        qDebug("CoreApplication event handler catched Quit and shutted down");
        QCoreApplication::quit();
    }
    return QCoreApplication::event(event);
}

void CoreApplication::handleSignal()
{
    char number = 0;
    if (::read(signalPipe[0], &number, 1) != 1) {
        return;
    }
    if (number == SIGHUP) {
        qInfo("handleSignal: SIGHUP, reading the logging properties again");
        Service::notify(QStringLiteral("RELOADING=1"));
        LoggingManager::instance()->reload();
        Service::closeOnExec();
        Service::notify(QStringLiteral("READY=1"));
        return;
    }
    qInfo("handleSignal: signal %d, quitting", int(number));
    QCoreApplication::postEvent(this, new QEvent(QEvent::Quit));
}

} // namespace business
} // namespace base
} // namespace corvane
