#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {

/// A process behind an interface, so that tests or other hosts can substitute it.
class CORE_EXPORT IProcessProxy : public QObject
{
    Q_OBJECT

public:
    /// Creates the proxy as a child of parent.
    explicit IProcessProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~IProcessProxy() override = default;

    /// The arguments the process was last started with (QProcess::arguments()).
    virtual QStringList arguments() const = 0;
    /// The exit code of the last process that finished (QProcess::exitCode()).
    virtual int exitCode() const = 0;
    /// The program last started (QProcess::program()).
    virtual QString program() const = 0;
    /// Reads all the process has written to standard output so far.
    virtual QByteArray readAllStandardOutput() = 0;
    /// Reads all the process has written to standard error so far.
    virtual QByteArray readAllStandardError() = 0;
    /// Starts the command line program, which is split into the program and its arguments.
    virtual void start(const QString& program, QIODevice::OpenMode mode = QIODevice::ReadWrite) = 0;
    /// Starts program with arguments (QProcess::start()).
    virtual void start(const QString& program, const QStringList& arguments,
                       QIODevice::OpenMode mode = QIODevice::ReadWrite)
        = 0;
    /// Waits up to msecs milliseconds (-1: no limit) for the process to finish; whether it did.
    virtual bool waitForFinished(int msecs = 30000) = 0;
    /// Waits up to msecs milliseconds (-1: no limit) for the process to start; whether it did.
    virtual bool waitForStarted(int msecs = 30000) = 0;
    /// The number of bytes waiting to be read from the current read channel.
    virtual qint64 bytesAvailable() const = 0;
    /// Reads one line of at most maxSize bytes (0: no limit) from the current read channel.
    virtual QByteArray readLine(qint64 maxSize = 0) = 0;
    /// Asks the process to end (SIGTERM).
    virtual void terminate() = 0;
    /// Sets the folder the process starts in.
    virtual void setWorkingDirectory(const QString& directory) = 0;
    /// Whether the last process that finished exited normally or crashed.
    virtual QProcess::ExitStatus exitStatus() const = 0;

signals:
    /// The process failed to start, crashed, timed out or could not be read or written.
    void errorOccurred(QProcess::ProcessError error);
    /// The process ended with exitCode and exitStatus.
    void finished(int exitCode, QProcess::ExitStatus exitStatus);
    /// The process wrote to standard error.
    void readyReadStandardError();
    /// The process wrote to standard output.
    void readyReadStandardOutput();
    /// The process has started.
    void started();
    /// The process changed its state to newState.
    void stateChanged(QProcess::ProcessState newState);
};

} // namespace core
} // namespace base
} // namespace corvane
