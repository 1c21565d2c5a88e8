#pragma once

// Real processes in tests: programs run to their end, copies of the demo in a temporary folder,
// and processes that outlive their starter (a daemon, a killed instance), found by their
// executable in /proc, ended by pid and checked gone, with the shared memory they leave behind.

#include "TestFiles.h"

#include <csignal>
#include <sys/shm.h>
#include <sys/wait.h>

struct Run
{
    int exitCode = -1; // also when it hung (then it is killed); -2 when it crashed
    QString out;
    QString err;
    QString outcome() const { return QString::number(exitCode) + ' ' + out; }
};

inline Run run(const QString& program, const QStringList& arguments,
               const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(120000);
    process.kill();
    process.waitForFinished();
    return {!ended                                             ? -1
                : process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                               : -2,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

// kill(2) for one process: never for a pid of 0 or less, which would signal a whole process
// group (the test's own and its runner's) or every process.
inline int signalProcess(qint64 pid, int signal)
{
    return pid > 0 ? ::kill(pid_t(pid), signal) : -1;
}

// Copies files into the folder: names in the folder "from", or absolute paths.
inline bool copyInto(const QString& folder, const QString& from, const QStringList& files)
{
    return std::all_of(files.begin(), files.end(), [&](const QString& file) {
        const QFileInfo source(QDir(from), file);
        return QFile::copy(source.filePath(), folder + '/' + source.fileName());
    });
}

// The program a process runs. A program of another CPU that the kernel hands to qemu through
// binfmt_misc (the arm64 build's tests) shows qemu as its executable and, in its command line,
// the program after qemu's own name.
inline QString programOf(const QString& pid)
{
    const QString exe = QFile::symLinkTarget("/proc/" + pid + "/exe");
    if (!QFileInfo(exe).fileName().startsWith("qemu-") && !exe.contains("/qemu-binfmt/"))
        return exe;
    const QList<QByteArray> arguments = readFile("/proc/" + pid + "/cmdline").split('\0');
    return arguments.size() > 1 ? QFileInfo(QString::fromLocal8Bit(arguments[1])).canonicalFilePath()
                                : exe;
}

inline QList<qint64> processesOf(const QString& executable)
{
    QList<qint64> pids;
    const QString program = QFileInfo(executable).canonicalFilePath();
    if (program.isEmpty())
        return pids;
    for (const QString& pid : QDir("/proc").entryList(QDir::Dirs)) {
        if (pid.toLongLong() > 0 && programOf(pid) == program)
            pids << pid.toLongLong();
    }
    return pids;
}

// Whether the process has ended; a zombie that its parent has not collected yet counts as ended
// (one of this process's own is collected here: never call this for a QProcess's child).
inline bool isGone(qint64 pid)
{
    ::waitpid(pid_t(pid), nullptr, WNOHANG);
    const QByteArray stat = readFile(QStringLiteral("/proc/%1/stat").arg(pid));
    return stat == "<missing>" || stat.mid(stat.lastIndexOf(')') + 2, 1) == "Z";
}

inline bool waitUntilGone(qint64 pid, int timeoutMs = 10000)
{
    return QTest::qWaitFor([pid] { return isGone(pid); }, timeoutMs);
}

// Ends every process of the executable with SIGKILL; whether all of them are gone.
inline bool killProcessesOf(const QString& executable)
{
    bool allGone = true;
    for (const qint64 pid : processesOf(executable)) {
        signalProcess(pid, SIGKILL);
        allGone = waitUntilGone(pid) && allGone;
    }
    return allGone;
}

// Removes the System V shared-memory segments that the given processes created and that no
// process is attached to any more: what killed processes leave behind.
inline void removeSharedMemoryOf(const QSet<qint64>& creators)
{
    for (const QByteArray& row : readFile("/proc/sysvipc/shm").split('\n')) {
        const QList<QByteArray> fields = row.simplified().split(' '); // key shmid perms size cpid
        if (fields.size() > 6 && creators.contains(fields[4].toLongLong()) && fields[6] == "0")
            ::shmctl(fields[1].toInt(), IPC_RMID, nullptr); // ... lpid nattch: no one attached
    }
}
