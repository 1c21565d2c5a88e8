#pragma once

#include "CoreExport.h"

#include <QStringList>

namespace corvane {
namespace base {
namespace business {

/**
 * The command line of an application of type SERVICE, which is its own service controller on
 * Linux (systemd):
 *
 *     app -i [account]   install as a systemd unit        app -u   uninstall
 *     app -v             version, installed, running       app -h   usage
 *     app -t | -p | -r   stop, pause, resume               app -c n send command n
 *     app                start (as a daemon, or under systemd as the service itself)
 *     app -e             run in the foreground
 *
 * The unit goes to /etc/systemd/system as root, else ~/.config/systemd/user, or to the folder
 * in CORVANE_SYSTEMD_UNIT_DIR. Actions exit with 0 on success and 1 on failure.
 */
class CORE_EXPORT ServiceController
{
public:
    /// name: the service's name (the application's, else the executable's base name).
    ServiceController(QStringList arguments, QString name, QString description);

    /// Whether this process is to run the service (no argument, or "-e").
    bool runsService() const;
    bool inForeground() const;
    /// Performs a control action; the exit code.
    int runAction();
    /// Without systemd, lets the process go on as a detached daemon; the starting process
    /// exits inside, with 0 once the service answers, else with 1.
    void daemonizeUnlessUnderSystemd();

    QString serviceName() const;
    QString controlSocket() const;
    QString unitFile() const;

    static QString usage(const QString& program);

private:
    bool validName() const;
    int install();
    int uninstall();
    int version();
    int control(const QString& request, const char* failure);
    bool isInstalled() const;
    bool isRunning() const;
    void reloadSystemd() const;

    QStringList arguments;
    QString name;
    QString description;
};

} // namespace business
} // namespace base
} // namespace corvane
