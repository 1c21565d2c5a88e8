#include "StartUp/Service.h"

#include "Exceptions/Exceptions.h"
#include "StartUp/CoreApplication.h"
#include "StartUp/ServiceControlServer.h"
#include "StartUp/StartUpManager.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

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

// Runs on the event loop: a stop that arrived meanwhile is handled right after.
void Service::slotStart()
{
    try {
        StartUpManager::instance()->initialize();
        QDir().mkpath(QFileInfo(controlSocket).absolutePath());
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
        sd_notify(0, "READY=1");
        qInfo().noquote() << QStringLiteral("slotStart: service started, control socket ")
                + controlSocket;
    } catch (const exceptions::BaseException& e) {
        qCritical().noquote()
            << QStringLiteral("The Service failed to start [%1]").arg(QString::fromUtf8(e.what()));
        QCoreApplication::exit(1);
    }
}

} // namespace business
} // namespace base
} // namespace corvane
