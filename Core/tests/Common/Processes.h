#pragma once

// Processes that a test starts without holding them in a QProcess (a daemon, an instance that
// outlives its starter): found by their executable in /proc, checked and ended by pid; bounded
// waits; and the shared memory that killed processes leave behind.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QSet>
#include <QString>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/wait.h>
#include <unistd.h>

// Orphans of the processes this one starts (a daemon whose starter ended) become its children
// instead of init's, so that isGone() can collect them.
inline bool adoptOrphans()
{
    return ::prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

// The live processes running the given executable file, read from /proc/<pid>/exe.
inline QList<qint64> processesOf(const QString& executable)
{
    const QByteArray target = QFileInfo(executable).canonicalFilePath().toLocal8Bit();
    QList<qint64> pids;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& entry : entries) {
        bool isNumber = false;
        const qint64 pid = entry.toLongLong(&isNumber);
        char link[4096];
        const ssize_t length
            = isNumber ? ::readlink(qPrintable("/proc/" + entry + "/exe"), link, sizeof link) : -1;
        if (length > 0 && QByteArray(link, int(length)) == target) {
            pids << pid;
        }
    }
    return pids;
}

// Whether the process has ended. An adopted orphan is collected here (never call this for a
// QProcess's own child); a zombie that another parent has not collected yet counts as ended.
inline bool isGone(qint64 pid)
{
    ::waitpid(pid_t(pid), nullptr, WNOHANG);
    if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH) {
        return true;
    }
    const QByteArray stat = [pid] {
        QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    const int end = stat.lastIndexOf(')'); // the command name may hold blanks and brackets
    return stat.isEmpty() || (end >= 0 && stat.mid(end + 2, 1) == "Z");
}

// Polls the condition, with Qt's events going on, until it holds or timeoutMs have passed;
// whether it held. Unlike QTRY_VERIFY it does not wait again after a time-out.
template <typename Condition>
bool waitFor(Condition condition, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs) {
            return false;
        }
        QTest::qWait(20);
    }
    return true;
}

inline bool waitUntilGone(qint64 pid, int timeoutMs)
{
    return waitFor([pid] { return isGone(pid); }, timeoutMs);
}

// Ends every process of the executable with SIGKILL; whether all of them are gone.
inline bool killProcessesOf(const QString& executable)
{
    bool allGone = true;
    for (const qint64 pid : processesOf(executable)) {
        ::kill(pid_t(pid), SIGKILL);
        allGone = waitUntilGone(pid, 10000) && allGone;
    }
    return allGone;
}

// Removes the System V shared-memory segments that the given processes created and that no
// process is attached to any more: what killed processes leave behind.
inline void removeSharedMemoryOf(const QSet<qint64>& creators)
{
    QFile table(QStringLiteral("/proc/sysvipc/shm"));
    const QList<QByteArray> rows
        = table.open(QIODevice::ReadOnly) ? table.readAll().split('\n') : QList<QByteArray>();
    for (const QByteArray& row : rows) {
        // key, shmid, perms, size, cpid, lpid, nattch, ...
        const QList<QByteArray> fields = row.simplified().split(' ');
        if (fields.size() > 6 && creators.contains(fields.at(4).toLongLong())
            && fields.at(6) == "0") {
            ::shmctl(fields.at(1).toInt(), IPC_RMID, nullptr);
        }
    }
}
