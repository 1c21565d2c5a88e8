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
 * "-C file" before the switch selects the configuration for every action; "-i" writes it into
 * the unit. The unit goes to /etc/systemd/system as root, else ~/.config/systemd/user, or to the
 * folder in CORVANE_SYSTEMD_UNIT_DIR. Actions exit with 0 on success and 1 on failure.
 */
class CORE_EXPORT ServiceController
{
public:
    /// name: the service's name (the application's, else the executable's base name).
    ServiceController(QStringList arguments, QString name, QString description);

    /// Whether this process is to run the service (no argument, or "-e").
    bool runsService() const;
    /// Whether the switch is "-e": the service runs in the foreground of this terminal.
    bool inForeground() const;
    /// Whether the service runs in this process: in the foreground, or started by systemd (or
    /// by startDaemon()), which then hears of its readiness.
    bool runsHere() const;
    /// Performs a control action; the exit code.
    int runAction();
    /// Starts this executable again as a detached daemon and waits until it is ready (0) or has
    /// failed (1, with "The service %s could not start"). The daemon is a fresh process, not a
    /// fork: nothing of this one's threads or libraries' state crosses over.
    int startDaemon();

    /// Whether the name can name a service (at most 255 characters, no backslash, the
    /// characters of a unit name that need no escaping); warns when it cannot.
    bool validName() const;
    /// The service's name, as given to the constructor.
    QString serviceName() const;
    /// The control socket of the running service: "<runtime folder>/<name>/control", the runtime
    /// folder being /run as root, else the user's one.
    QString controlSocket() const;
    /// The systemd unit file that "-i" writes and "-u" removes: "<unit folder>/<name>.service".
    QString unitFile() const;
    /// WatchdogSec= of the unit that "-i" writes; 0 for none.
    void setWatchdogSeconds(int seconds);
    /// "-i" installs only when this configuration file's signature is valid.
    void setSignatureCheck(const QString& configurationFile);
    /// Creates the control socket's folder (0700) unless it is there, and checks that it is the
    /// user's own and that no one else may write in it, with a critical line when it is not.
    static bool makeControlFolder(const QString& socket);

    /// The usage text that "-h" prints, for the executable program.
    static QString usage(const QString& program);

private:
    QString action() const;
    int install();
    QString installObstacle(const QString& account) const;
    int uninstall();
    int version();
    int control(const QString& request, const char* failure);
    bool isInstalled() const;
    bool isRunning() const;
    void reloadSystemd() const;
    QString execStart() const;

    QStringList arguments;
    QString configuration; // the value of a leading "-C", as given
    QString name;
    QString description;
    int watchdogSeconds = 0;
    QString signedConfiguration; // checked before "-i" when set
};

} // namespace business
} // namespace base
} // namespace corvane
