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
 * what systemd hears of it (NOTIFY_SOCKET): STATUS of the start, READY=1, WATCHDOG=1 at half
 * the interval systemd asks for, RELOADING=1 and STOPPING=1. Plug-ins follow pause, resume and
 * commands through its signals:
 *
 *     if (auto* service = corvane::base::business::Service::instance())
 *         connect(service, &Service::paused, this, &MyPlugin::pause);
 */
class CORE_EXPORT Service : public QObject
{
    Q_OBJECT

public:
    /// Creates the service's application object; the control socket is opened by the start.
    Service(int& argc, char** argv, QString controlSocket);
    ~Service() override;

    /// The running service, or null when the application is no service.
    static Service* instance();

    /// Starts the framework once the event loop runs (slotStart()), runs the loop, returns its code.
    int exec();

    /// Tells systemd (NOTIFY_SOCKET) a state such as "READY=1"; nothing without systemd.
    static void notify(const QString& state);
    /// Sets close-on-exec on every descriptor above standard error that lacks it.
    static void closeOnExec();

signals:
    /// The service was asked to pause ("-p").
    void paused();
    /// The service was asked to resume ("-r").
    void resumed();
    /// The service was sent the command number ("-c number").
    void command(int number);

public slots:
    /// Starts the managers and plug-ins, opens the control socket and tells systemd READY=1; a
    /// failure is logged and ends the event loop with 1.
    void slotStart();

private:
    void startWatchdog();

    std::unique_ptr<CoreApplication> application;
    QString controlSocket;
    ServiceControlServer* control = nullptr;
};

} // namespace business
} // namespace base
} // namespace corvane
