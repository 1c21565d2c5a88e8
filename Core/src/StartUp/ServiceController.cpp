#include "StartUp/ServiceController.h"

#include "Configuration/FileSignature.h"
#include "Logging/LoggingManager.h"
#include "StartUp/ManagerRegistry.h"
#include "StartUp/ServiceControlServer.h"
#include "Utility/PrivateFolder.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

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

// How long a daemon may take to report that it is ready, as long as systemd's default.
constexpr int daemonStartTimeout = 90000;

// A folder that only this user can change: owned by the user, no symbolic link, and neither
// group nor others may write in it.
bool isOwnFolder(const QString& path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode)
        && status.st_uid == ::geteuid() && (status.st_mode & mode_t(S_IWGRP | S_IWOTH)) == 0;
}

// Creates the folder 0700 unless it is there; whether it is the user's own as isOwnFolder says.
bool makeOwnFolder(const QString& path)
{
    ::mkdir(QFile::encodeName(path).constData(), 0700);
    if (isOwnFolder(path)) {
        return true;
    }
    qCritical().noquote() << QStringLiteral("controlSocket: ") + path
            + QStringLiteral(" is not a private folder of this user; refused.");
    return false;
}

// The user's runtime folder: $XDG_RUNTIME_DIR when it is private, else a folder of the user's own
// in the temporary folder (empty when none can be used).
QString userRuntimeDirectory()
{
    return core::utility::PrivateFolder::runtimeFolder();
}

// Characters that systemd-escape leaves as they are; a leading dot it escapes.
bool isUnitName(const QString& name)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9:_-][A-Za-z0-9:_.-]*$"));
    return plain.match(name).hasMatch();
}

// Control characters, line breaks and line or paragraph separators end a line of a unit file,
// or would be part of it unseen.
bool hasControlCharacters(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) {
        return c.category() == QChar::Other_Control || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator;
    });
}

// A user name as systemd takes it for User= without a warning: a strict POSIX-style name, or a
// number.
bool isAccountName(const QString& account)
{
    static const QRegularExpression valid(
        QStringLiteral("^([A-Za-z_][A-Za-z0-9_-]{0,31}|[0-9]{1,10})$"));
    return valid.match(account).hasMatch();
}

// Free text for a unit's value: "%" keeps its literal meaning, and a trailing backslash does not
// join the next line.
QString unitText(QString text)
{
    text = text.trimmed().replace(QLatin1Char('%'), QLatin1String("%%"));
    int backslashes = 0;
    while (backslashes < text.size()
           && text.at(text.size() - 1 - backslashes) == QLatin1Char('\\')) {
        ++backslashes;
    }
    return backslashes % 2 == 0 ? text : text + QLatin1Char('\\');
}

// One word of a unit's Exec line: quoted when it holds blanks, quotes or backslashes; "%" and
// "$" keep their literal meaning ("$" is doubled in arguments only: systemd does not expand
// variables in the command, and refuses "$$" there).
QString unitArgument(QString argument, bool isCommand = false)
{
    argument.replace(QLatin1Char('%'), QLatin1String("%%"));
    if (!isCommand) {
        argument.replace(QLatin1Char('$'), QLatin1String("$$"));
    }
    if (argument.contains(QRegularExpression(QStringLiteral("[\\s\"'\\\\;]")))) {
        argument.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
            .replace(QLatin1Char('"'), QLatin1String("\\\""));
        argument = QLatin1Char('"') + argument + QLatin1Char('"');
    }
    return argument;
}

// The executable to start again: argv[0] made absolute, or the running executable when argv[0]
// was found through PATH.
QString executablePath(const QString& argument)
{
    return argument.contains(QLatin1Char('/'))
        ? QDir::cleanPath(QFileInfo(argument).absoluteFilePath())
        : QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
}

// A datagram socket in the abstract namespace, as systemd's NOTIFY_SOCKET; its name or empty.
QByteArray bindNotifySocket(int socket)
{
    const QByteArray name = QByteArrayLiteral("corvane-notify-") + QByteArray::number(::getpid())
        + '-' + QByteArray::number(QRandomGenerator::system()->generate64(), 16);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name.constData(), size_t(name.size()));
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + size_t(name.size()));
    return ::bind(socket, reinterpret_cast<sockaddr*>(&address), length) == 0 ? name : QByteArray();
}

// What the daemon reports: "READY=1" and the last "STATUS=" text. Anyone may find the socket's
// name and write to it: only what the daemon itself sends counts, known by the sender's process
// id that the kernel attaches (SO_PASSCRED).
struct Readiness
{
    bool ready = false;
    QString status;

    void read(int socket, pid_t daemon)
    {
        char buffer[4096];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
        iovec data {buffer, sizeof buffer};
        msghdr message {};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t size = ::recvmsg(socket, &message, MSG_DONTWAIT);
        if (size <= 0) {
            return;
        }
        const cmsghdr* header = CMSG_FIRSTHDR(&message);
        ucred sender = {};
        if (header == nullptr || header->cmsg_level != SOL_SOCKET
            || header->cmsg_type != SCM_CREDENTIALS) {
            return;
        }
        std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
        if (sender.pid != daemon) {
            return;
        }
        for (const QByteArray& line : QByteArray(buffer, int(size)).split('\n')) {
            if (line == "READY=1") {
                ready = true;
            } else if (line.startsWith("STATUS=")) {
                status = QString::fromUtf8(line.mid(7));
            }
        }
    }
};

} // namespace

ServiceController::ServiceController(QStringList arguments, QString name, QString description)
    : arguments(std::move(arguments)), name(std::move(name)), description(std::move(description))
{
    // "-C file" before the switch selects the configuration; the switch follows it.
    while (this->arguments.size() >= 3 && this->arguments.at(1) == QLatin1String("-C")) {
        configuration = this->arguments.at(2);
        this->arguments.erase(this->arguments.begin() + 1, this->arguments.begin() + 3);
    }
}

bool ServiceController::runsService() const
{
    return arguments.size() < 2 || inForeground();
}

bool ServiceController::inForeground() const
{
    return isSwitch(action(), "-e", "-exec");
}

bool ServiceController::runsHere() const
{
    return inForeground() || qEnvironmentVariableIsSet("NOTIFY_SOCKET")
        || qEnvironmentVariableIsSet("INVOCATION_ID");
}

QString ServiceController::action() const
{
    return arguments.value(1);
}

void ServiceController::setWatchdogSeconds(int seconds)
{
    watchdogSeconds = seconds;
}

QString ServiceController::serviceName() const
{
    return name;
}

// Where systemd keeps a service's runtime folder (RuntimeDirectory=), also when the service
// was started without systemd: the service itself is told it in RUNTIME_DIRECTORY (also when it
// runs under another account, User=), root finds it in /run. Empty when the user has no private
// folder for it.
QString ServiceController::controlSocket() const
{
    const QString runtimeDirectory
        = QString::fromLocal8Bit(qgetenv("RUNTIME_DIRECTORY")).section(QLatin1Char(':'), 0, 0);
    if (!runtimeDirectory.isEmpty() && runsHere() && !inForeground()) {
        return runtimeDirectory + QStringLiteral("/control");
    }
    const QString base = asRoot() ? QStringLiteral("/run") : userRuntimeDirectory();
    return base.isEmpty() ? QString() : base + QLatin1Char('/') + name + QStringLiteral("/control");
}

bool ServiceController::makeControlFolder(const QString& socket)
{
    return !socket.isEmpty() && makeOwnFolder(QFileInfo(socket).absolutePath());
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
    const QString action = this->action();
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
        qWarning("ServiceController: 'name' is longer than 255 characters.");
        return false;
    }
    if (name.contains(QLatin1Char('\\'))) {
        qWarning("ServiceController: 'name' contains backslashes '\\'.");
        return false;
    }
    if (!isUnitName(name)) {
        qWarning("ServiceController: 'name' is no valid unit name: letters, digits and \":_.-\" "
                 "only, not beginning with a dot.");
        return false;
    }
    return true;
}

void ServiceController::setSignatureCheck(const QString& configurationFile)
{
    signedConfiguration = configurationFile;
}

// Why the unit cannot be written as asked: a text that would break out of its line, an account
// or a path that systemd does not take, a configuration whose signature fails; empty when
// nothing stands in the way.
QString ServiceController::installObstacle(const QString& account) const
{
    if (hasControlCharacters(description)) {
        return QStringLiteral("the title holds control characters or line breaks");
    }
    const bool localSystem = account.endsWith(QLatin1String("\\LocalSystem"));
    if (!account.isEmpty() && !localSystem && !isAccountName(account)) {
        return QStringLiteral("the account is no user name that systemd takes");
    }
    // systemd refuses quotes, backslashes and control characters in a command's path.
    const QString executable = executablePath(arguments.value(0));
    if (executable.contains(QRegularExpression(QStringLiteral("[\"'\\\\\\x00-\\x1f\\x7f]")))
        || hasControlCharacters(configuration)) {
        return QStringLiteral("systemd cannot start a command at ") + executable;
    }
    if (!signedConfiguration.isEmpty()) {
        // The signature code logs through the logging manager, which an action does not start.
        ManagerRegistry::instance()->registerManager(*LoggingManager::instance());
    }
    if (!signedConfiguration.isEmpty() && !FileSignature().isValid(signedConfiguration, false)) {
        return QStringLiteral("Signature check for configuration file has found an error: ")
            + signedConfiguration;
    }
    return QString();
}

int ServiceController::install()
{
    const QByteArray service = local(name);
    if (isInstalled()) {
        std::printf("The service %s is already installed\n", service.constData());
        return 1;
    }
    const QString account = arguments.value(2);
    const QString obstacle = installObstacle(account);
    if (!obstacle.isEmpty()) {
        qCritical().noquote() << QStringLiteral("install: ") + obstacle;
        std::printf("The service %s could not be installed\n", service.constData());
        return 1;
    }
    const QFileInfo executable(executablePath(arguments.value(0)));
    QString unit
        = QStringLiteral("[Unit]\nDescription=%1\n\n[Service]\nType=notify\nExecStart=%2\n"
                         "ExecReload=/bin/kill -HUP $MAINPID\nWorkingDirectory=%3\n"
                         "Restart=on-failure\nRuntimeDirectory=%4\nRuntimeDirectoryMode=0700\n")
              .arg(unitText(description.isEmpty() ? name : description), execStart(),
                   unitText(executable.absolutePath()), name);
    if (watchdogSeconds > 0) {
        unit += QStringLiteral("WatchdogSec=%1\n").arg(watchdogSeconds);
    }
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

QString ServiceController::execStart() const
{
    QStringList command {unitArgument(executablePath(arguments.value(0)), true)};
    if (!configuration.isEmpty()) {
        command << QStringLiteral("-C") << unitArgument(configuration);
    }
    return command.join(QLatin1Char(' '));
}

// The daemon tells its readiness as it would tell systemd: through NOTIFY_SOCKET, here a socket
// of this process. Its death before that, or silence for too long, is a failed start. It starts
// as systemd would start it: umask 0022, in "/", no descriptor above 2 of this process, in a
// session of its own.
int ServiceController::startDaemon()
{
    Readiness readiness;
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    const QByteArray socketName
        = socket >= 0 && ::setsockopt(socket, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) == 0
        ? bindNotifySocket(socket)
        : QByteArray();
    pid_t daemon = -1;
    if (!socketName.isEmpty()) {
        QList<QByteArray> environment;
        for (char** variable = environ; *variable != nullptr; ++variable) {
            const QByteArray entry(*variable);
            if (!entry.startsWith("NOTIFY_SOCKET=") && !entry.startsWith("WATCHDOG_")) {
                environment << entry;
            }
        }
        environment << "NOTIFY_SOCKET=@" + socketName;
        // Absolute: the configuration is found beside it, whatever the current folder.
        QList<QByteArray> command {local(executablePath(arguments.value(0)))};
        if (!configuration.isEmpty()) {
            command << "-C" << local(configuration);
        }
        std::vector<char*> argv;
        for (QByteArray& argument : command) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        std::vector<char*> envp;
        for (QByteArray& entry : environment) {
            envp.push_back(entry.data());
        }
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
        posix_spawn_file_actions_addchdir_np(&actions, "/");
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
        const mode_t umask = ::umask(022); // inherited by the daemon; this process ends soon
        // The program by the absolute path /proc/self/exe links to, not by that link: an
        // emulator (qemu-user) runs the link as the path the program was started by, which the
        // folder change breaks.
        const QByteArray program
            = QFile::encodeName(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
        if (posix_spawn(&daemon, program.constData(), &actions, &attributes, argv.data(),
                        envp.data())
            != 0) {
            daemon = -1;
        }
        ::umask(umask);
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }

    QElapsedTimer waited;
    waited.start();
    int status = 0;
    while (daemon > 0 && !readiness.ready) {
        if (::waitpid(daemon, &status, WNOHANG) == daemon) {
            daemon = -1;
            break;
        }
        if (waited.elapsed() > daemonStartTimeout) {
            ::kill(daemon, SIGKILL);
            ::waitpid(daemon, &status, 0);
            daemon = -1;
            readiness.status
                = QStringLiteral("No answer within %1 s.").arg(daemonStartTimeout / 1000);
            break;
        }
        pollfd wait = {socket, POLLIN, 0};
        if (::poll(&wait, 1, 100) > 0) {
            readiness.read(socket, daemon);
        }
    }
    if (socket >= 0) {
        ::close(socket);
    }
    if (readiness.ready) {
        return 0;
    }
    std::printf("The service %s could not start\n", local(name).constData());
    std::fflush(stdout);
    if (!readiness.status.isEmpty()) {
        std::fprintf(stderr, "%s\n", local(readiness.status).constData());
    }
    return 1;
}

} // namespace business
} // namespace base
} // namespace corvane
