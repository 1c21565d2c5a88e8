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
    explicit IProcessProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~IProcessProxy() override = default;

    virtual QStringList arguments() const = 0;
    virtual int exitCode() const = 0;
    virtual QString program() const = 0;
    virtual QByteArray readAllStandardOutput() = 0;
    virtual QByteArray readAllStandardError() = 0;
    virtual void start(const QString& program, QIODevice::OpenMode mode = QIODevice::ReadWrite) = 0;
    virtual void start(const QString& program, const QStringList& arguments,
                       QIODevice::OpenMode mode = QIODevice::ReadWrite)
        = 0;
    virtual bool waitForFinished(int msecs = 30000) = 0;
    virtual bool waitForStarted(int msecs = 30000) = 0;
    virtual qint64 bytesAvailable() const = 0;
    virtual QByteArray readLine(qint64 maxSize = 0) = 0;
    virtual void terminate() = 0;
    virtual void setWorkingDirectory(const QString& directory) = 0;
    virtual QProcess::ExitStatus exitStatus() const = 0;

signals:
    void errorOccurred(QProcess::ProcessError error);
    void finished(int exitCode, QProcess::ExitStatus exitStatus);
    void readyReadStandardError();
    void readyReadStandardOutput();
    void started();
    void stateChanged(QProcess::ProcessState newState);
};

} // namespace core
} // namespace base
} // namespace corvane
