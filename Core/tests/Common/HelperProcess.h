#pragma once

// Runs a helper program to its end, for scenarios that may crash or draw a sanitizer report.

#include <QProcess>

#include <signal.h>

struct HelperRun
{
    bool finished = false; // ended by itself within the time allowed
    bool gone = false; // no process of that id is left afterwards
    QProcess::ExitStatus status = QProcess::CrashExit;
    int exitCode = -1;
    QByteArray out;
    QByteArray err;

    bool exitedCleanly() const
    {
        return finished && gone && status == QProcess::NormalExit && exitCode == 0
            && !err.contains("Sanitizer") && !err.contains("runtime error:");
    }
    QString report() const
    {
        return QStringLiteral("finished %1, gone %2, exit code %3\n")
                   .arg(finished)
                   .arg(gone)
                   .arg(status ? -1 : exitCode)
            + out + "\n" + err.right(6000);
    }
};

inline HelperRun runHelper(const QString& program, const QStringList& arguments = {})
{
    HelperRun run;
    QProcess process;
    process.start(program, arguments);
    const qint64 pid = process.waitForStarted(30000) ? process.processId() : 0;
    if (!(run.finished = pid != 0 && process.waitForFinished(120000))) {
        process.kill();
        process.waitForFinished(30000);
    }
    run.gone = pid == 0 || ::kill(pid_t(pid), 0) != 0;
    run.status = process.exitStatus();
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = pid == 0 ? process.errorString().toLocal8Bit() : process.readAllStandardError();
    return run;
}
