#pragma once

// Runs a helper program to its end, for scenarios that may crash or draw a sanitizer report:
// the test sees the outcome instead of dying with it.

#include <QProcess>
#include <QString>
#include <QStringList>

#include <signal.h>

struct HelperRun
{
    bool finished = false; // ended by itself within the time allowed
    bool gone = false; // no process of that id is left afterwards
    QProcess::ExitStatus status = QProcess::CrashExit;
    int exitCode = -1;
    QByteArray out;
    QByteArray err;

    bool sanitizerReported() const
    {
        return err.contains("AddressSanitizer") || err.contains("LeakSanitizer")
            || err.contains("runtime error:");
    }

    /// Ended by itself with exit code 0 and nothing reported by the sanitizers.
    bool exitedCleanly() const
    {
        return finished && gone && status == QProcess::NormalExit && exitCode == 0
            && !sanitizerReported();
    }

    /// The outcome, with standard error from its first sanitizer report on (or its end).
    QString report() const
    {
        int from = err.indexOf("ERROR: AddressSanitizer");
        for (const char* mark : {"ERROR: LeakSanitizer", "runtime error:"}) {
            from = from < 0 ? err.indexOf(mark) : from;
        }
        const QByteArray shown = from < 0 ? err.right(4000) : err.mid(from, 4000);
        return QStringLiteral(
                   "finished %1, gone %2, %3, exit code %4\n--- stdout:\n%5--- stderr:\n%6")
            .arg(finished)
            .arg(gone)
            .arg(status == QProcess::NormalExit ? "normal exit" : "crash exit")
            .arg(exitCode)
            .arg(QString::fromLocal8Bit(out), QString::fromLocal8Bit(shown));
    }
};

inline HelperRun runHelper(const QString& program, const QStringList& arguments = {},
                           int timeoutMs = 120000)
{
    HelperRun run;
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForStarted(30000)) {
        run.err = process.errorString().toLocal8Bit();
        return run;
    }
    const qint64 pid = process.processId();
    run.finished = process.waitForFinished(timeoutMs);
    if (!run.finished) {
        process.kill();
        process.waitForFinished(30000);
    }
    run.gone = ::kill(pid_t(pid), 0) != 0;
    run.status = process.exitStatus();
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}
