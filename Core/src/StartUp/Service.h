#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>

#include <memory>

namespace corvane {
namespace base {
namespace business {

class CoreApplication;
class ServiceControlServer;

/**
 * Runs the framework as a service: its CoreApplication, the control socket through which
 * "-t", "-p", "-r" and "-c num" reach it, the framework's start once the event loop runs, and
 * systemd's READY=1. Plug-ins follow pause, resume and commands through its signals:
 *
 *     if (auto* service = corvane::base::business::Service::instance())
 *         connect(service, &Service::paused, this, &MyPlugin::pause);
 */
class CORE_EXPORT Service : public QObject
{
    Q_OBJECT

public:
    Service(int& argc, char** argv, QString controlSocket);
    ~Service() override;

    /// The running service, or null when the application is no service.
    static Service* instance();

    int exec();

signals:
    void paused();
    void resumed();
    void command(int number);

public slots:
    void slotStart();

private:
    std::unique_ptr<CoreApplication> application;
    QString controlSocket;
    ServiceControlServer* control = nullptr;
};

} // namespace business
} // namespace base
} // namespace corvane
