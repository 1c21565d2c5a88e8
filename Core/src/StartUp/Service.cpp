#include "StartUp/Service.h"

#include "Exceptions/Exceptions.h"
#include "Plugins/PluginManager.h"
#include "StartUp/CoreApplication.h"
#include "StartUp/ServiceControlServer.h"
#include "StartUp/ServiceController.h"
#include "StartUp/StartUpManager.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include <limits>

#include <fcntl.h>
#include <unistd.h>

#include <systemd/sd-daemon.h>

namespace corvane {
namespace base {
namespace business {

namespace {
Service* running = nullptr;
}

Service::Service(int& argc, char** argv, QString controlSocket)
    : application(std::make_unique<CoreApplication>(argc, argv)),
      controlSocket(std::move(controlSocket))
{
    running = this;
}

Service::~Service()
{
    running = nullptr;
    delete control;
}

Service* Service::instance()
{
    return running;
}

int Service::exec()
{
    QMetaObject::invokeMethod(this, &Service::slotStart, Qt::QueuedConnection);
    return application->exec();
}

// Descriptors that others opened for the library without close-on-exec (log4cplus's log files)
// get it, so that processes that plug-ins start inherit none of them.
void Service::closeOnExec()
{
    const QStringList descriptors = QDir(QStringLiteral("/proc/self/fd"))
                                        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QString& entry : descriptors) {
        const int descriptor = entry.toInt();
        const int flags = descriptor > STDERR_FILENO ? ::fcntl(descriptor, F_GETFD) : -1;
        if (flags >= 0 && (flags & FD_CLOEXEC) == 0) {
            ::fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC);
        }
    }
}

// Runs on the event loop: a stop that arrived meanwhile is handled right after. Under systemd
// (and when started as a daemon) the start is told through NOTIFY_SOCKET: its phases as STATUS,
// READY=1 once the framework runs, or the failure before the process ends with 1.
void Service::slotStart()
{
    PluginManager* plugins = PluginManager::instance();
    const QMetaObject::Connection phases
        = connect(plugins, &PluginManager::signalStartPhase, this,
                  [](const QString& phase) { notify(QStringLiteral("STATUS=") + phase); });
    closeOnExec();
    try {
        StartUpManager::instance()->initialize();
        disconnect(phases);
        if (!plugins->startFailure().isEmpty()) {
            throw exceptions::PluginManagerException(plugins, QStringLiteral("slotInitialize"),
                                                     plugins->startFailure());
        }
        if (!ServiceController::makeControlFolder(controlSocket)) {
            throw exceptions::ConnectException(
                this, QStringLiteral("slotStart"),
                QStringLiteral("No private folder for the control socket ") + controlSocket);
        }
        control = new ServiceControlServer;
        connect(control, &ServiceControlServer::stopRequested, application.get(), [this] {
            QCoreApplication::postEvent(application.get(), new QEvent(QEvent::Quit));
        });
        connect(control, &ServiceControlServer::pauseRequested, this, [this] {
            qInfo("slotStart: pause requested");
            emit paused();
        });
        connect(control, &ServiceControlServer::resumeRequested, this, [this] {
            qInfo("slotStart: resume requested");
            emit resumed();
        });
        connect(control, &ServiceControlServer::commandRequested, this, [this](int number) {
            qInfo("slotStart: command %d requested", number);
            emit command(number);
        });
        if (!control->listen(controlSocket)) {
            throw exceptions::ConnectException(this, QStringLiteral("slotStart"),
                                               QStringLiteral("Cannot listen on ") + controlSocket);
        }
        notify(QStringLiteral("STATUS=Running"));
        notify(QStringLiteral("READY=1"));
        startWatchdog();
        qInfo().noquote() << QStringLiteral("slotStart: service started, control socket ")
                + controlSocket;
    } catch (const exceptions::BaseException& e) {
        disconnect(phases);
        const QString failure
            = QStringLiteral("The Service failed to start [%1]").arg(QString::fromUtf8(e.what()));
        qCritical().noquote() << failure;
        notify(QStringLiteral("STATUS=") + failure);
        QCoreApplication::exit(1);
    }
}

// Half of systemd's interval, so that one late ping is no reason for a restart; a main thread
// that is stuck sends none.
void Service::startWatchdog()
{
    uint64_t interval = 0;
    if (sd_watchdog_enabled(0, &interval) <= 0 || interval == 0) {
        return;
    }
    auto* watchdog = new QTimer(this);
    watchdog->setTimerType(Qt::PreciseTimer);
    connect(watchdog, &QTimer::timeout, this, [] { notify(QStringLiteral("WATCHDOG=1")); });
    watchdog->start(int(qBound<uint64_t>(1, interval / 2000, std::numeric_limits<int>::max())));
}

void Service::notify(const QString& state)
{
    sd_notify(0, state.toUtf8().constData());
}

} // namespace business
} // namespace base
} // namespace corvane
