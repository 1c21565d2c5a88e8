#include "StartUp/ServiceController.h"

#include "StartUp/ServiceControlServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <cstdio>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace base {
namespace business {

namespace {

const char* const usageText = "\n%s -[i|u|e|s|v|h]\n"
                              "\t-i(nstall) [account] [password]\t: Install the service, "
                              "optionally using given account and password\n"
                              "\t-u(ninstall)\t: Uninstall the service.\n"
                              "\t-e(xec)\t\t: Run as a regular application. Useful for debugging.\n"
                              "\t-t(erminate)\t: Stop the service.\n"
                              "\t-c(ommand) num\t: Send command code num to the service.\n"
                              "\t-v(ersion)\t: Print version and status information.\n"
                              "\t-h(elp)   \t: Show this help\n"
                              "\tNo arguments\t: Start the service.\n\n";

bool isSwitch(const QString& argument, const char* shortForm, const char* longForm)
{
    return argument == QLatin1String(shortForm) || argument == QLatin1String(longForm);
}

QByteArray local(const QString& text)
{
    return text.toLocal8Bit();
}

bool asRoot()
{
    return ::geteuid() == 0;
}

QString userRuntimeDirectory()
{
    const QByteArray xdg = qgetenv("XDG_RUNTIME_DIR");
    return xdg.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)
                         : QString::fromLocal8Bit(xdg);
}

} // namespace

ServiceController::ServiceController(QStringList arguments, QString name, QString description)
    : arguments(std::move(arguments)), name(std::move(name)), description(std::move(description))
{
}

bool ServiceController::runsService() const
{
    return arguments.size() < 2 || inForeground();
}

bool ServiceController::inForeground() const
{
    return arguments.size() >= 2 && isSwitch(arguments.at(1), "-e", "-exec");
}

QString ServiceController::serviceName() const
{
    return name;
}

// Where systemd keeps a service's runtime folder (RuntimeDirectory=), also when the service
// was started without systemd.
QString ServiceController::controlSocket() const
{
    const QString base = asRoot() ? QStringLiteral("/run") : userRuntimeDirectory();
    return base + QLatin1Char('/') + name + QStringLiteral("/control");
}

QString ServiceController::unitFile() const
{
    QString folder = QString::fromLocal8Bit(qgetenv("CORVANE_SYSTEMD_UNIT_DIR"));
    if (folder.isEmpty()) {
        folder = asRoot() ? QStringLiteral("/etc/systemd/system")
                          : QDir::homePath() + QStringLiteral("/.config/systemd/user");
    }
    return folder + QLatin1Char('/') + name + QStringLiteral(".service");
}

QString ServiceController::usage(const QString& program)
{
    return QString::asprintf(usageText, local(program).constData());
}

int ServiceController::runAction()
{
    const QString action = arguments.value(1);
    if (isSwitch(action, "-h", "-help")) {
        std::fputs(local(usage(arguments.value(0))).constData(), stdout);
        return 0;
    }
    if (!validName()) {
        return 1;
    }
    if (isSwitch(action, "-i", "-install")) {
        return install();
    }
    if (isSwitch(action, "-u", "-uninstall")) {
        return uninstall();
    }
    if (isSwitch(action, "-v", "-version")) {
        return version();
    }
    if (isSwitch(action, "-t", "-terminate")) {
        return control(QStringLiteral("stop"), "The service could not be stopped.");
    }
    if (isSwitch(action, "-p", "-pause")) {
        return control(QStringLiteral("pause"), nullptr);
    }
    if (isSwitch(action, "-r", "-resume")) {
        return control(QStringLiteral("resume"), nullptr);
    }
    if (isSwitch(action, "-c", "-command")) {
        bool ok = false;
        const int number = arguments.value(2).toInt(&ok);
        return ok ? control(QStringLiteral("command %1").arg(number), nullptr) : 1;
    }
    std::fputs(local(usage(arguments.value(0))).constData(), stdout);
    return 1;
}

bool ServiceController::validName() const
{
    if (name.size() > 255) {
        std::fprintf(stderr, "ServiceController: '%s' is longer than 255 characters.\n",
                     local(name).constData());
        return false;
    }
    if (name.contains(QLatin1Char('\\'))) {
        std::fprintf(stderr, "ServiceController: '%s' contains backslashes '\\'.\n",
                     local(name).constData());
        return false;
    }
    return true;
}

int ServiceController::install()
{
    const QByteArray service = local(name);
    if (isInstalled()) {
        std::printf("The service %s is already installed\n", service.constData());
        return 1;
    }
    const QFileInfo executable(QFileInfo(arguments.value(0)).absoluteFilePath());
    const QString account = arguments.value(2);
    QString unit = QStringLiteral("[Unit]\nDescription=%1\n\n[Service]\nType=notify\nExecStart=%2\n"
                                  "WorkingDirectory=%3\nRestart=on-failure\nRuntimeDirectory=%4\n")
                       .arg(description.isEmpty() ? name : description,
                            executable.absoluteFilePath(), executable.absolutePath(), name);
    if (!account.isEmpty() && !account.endsWith(QLatin1String("\\LocalSystem"))) {
        unit += QStringLiteral("User=%1\n").arg(account); // a password means nothing to systemd
    }
    unit += QStringLiteral("\n[Install]\nWantedBy=%1\n")
                .arg(asRoot() ? "multi-user.target" : "default.target");

    QDir().mkpath(QFileInfo(unitFile()).absolutePath());
    QFile file(unitFile());
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || file.write(unit.toUtf8()) < 0) {
        std::printf("The service %s could not be installed\n", service.constData());
        return 1;
    }
    file.close();
    reloadSystemd();
    std::printf("The service %s has been installed under: %s\n", service.constData(),
                local(unitFile()).constData());
    return 0;
}

int ServiceController::uninstall()
{
    const QByteArray service = local(name);
    if (!isInstalled()) {
        std::printf("The service %s is not installed\n", service.constData());
        return 1;
    }
    if (!QFile::remove(unitFile())) {
        std::printf("The service %s could not be uninstalled\n", service.constData());
        return 1;
    }
    reloadSystemd();
    std::printf("The service %s has been uninstalled.\n", service.constData());
    return 0;
}

int ServiceController::version()
{
    const QString application
        = QStringLiteral("%1 (%2)").arg(name, QFileInfo(arguments.value(0)).absoluteFilePath());
    std::printf("The service\n\t%s\n\t%s\n\n", local(application).constData(),
                "Corvane Core " CORVANE_CORE_VERSION);
    std::printf("is %s", isInstalled() ? "installed" : "not installed");
    std::printf("and %s\n\n", isRunning() ? "running" : "not running");
    return 0;
}

int ServiceController::control(const QString& request, const char* failure)
{
    if (ServiceControlServer::request(controlSocket(), request)) {
        return 0;
    }
    if (failure != nullptr) {
        std::fputs(failure, stdout);
    } else {
        std::fprintf(stderr, "The service %s is not running\n", local(name).constData());
    }
    return 1;
}

bool ServiceController::isInstalled() const
{
    return QFile::exists(unitFile());
}

bool ServiceController::isRunning() const
{
    return ServiceControlServer::request(controlSocket(), QStringLiteral("status"), 2000);
}

void ServiceController::reloadSystemd() const
{
    if (QFileInfo::exists(QStringLiteral("/run/systemd/system"))) {
        QStringList reload {QStringLiteral("daemon-reload")};
        if (!asRoot()) {
            reload.prepend(QStringLiteral("--user"));
        }
        QProcess::execute(QStringLiteral("systemctl"), reload);
    }
}

// Called before any Qt application or log4cplus exists, so that forking is safe.
void ServiceController::daemonizeUnlessUnderSystemd()
{
    if (inForeground() || qEnvironmentVariableIsSet("NOTIFY_SOCKET")
        || qEnvironmentVariableIsSet("INVOCATION_ID")) {
        return;
    }
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0) {
        std::printf("The service %s could not start\n", local(name).constData());
        std::exit(1);
    }
    if (child > 0) {
        // The starting process: done once the service answers, or when it died.
        QElapsedTimer waited;
        waited.start();
        int status = 0;
        while (waited.elapsed() < 60000 && ::waitpid(child, &status, WNOHANG) == 0) {
            if (isRunning()) {
                std::exit(0);
            }
            QThread::msleep(50);
        }
        std::printf("The service %s could not start\n", local(name).constData());
        std::exit(1);
    }
    ::setsid();
    const int null = ::open("/dev/null", O_RDWR);
    if (null >= 0) {
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        if (null > STDERR_FILENO) {
            ::close(null);
        }
    }
}

} // namespace business
} // namespace base
} // namespace corvane
