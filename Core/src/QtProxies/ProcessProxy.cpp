#include "QtProxies/ProcessProxy.h"

namespace corvane {
namespace base {
namespace core {

ProcessProxy::ProcessProxy(QObject* parent) : IProcessProxy(parent), process(new QProcess(this))
{
    connect(process, &QProcess::errorOccurred, this, &IProcessProxy::errorOccurred);
    connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &IProcessProxy::finished);
    connect(process, &QProcess::readyReadStandardError, this,
            &IProcessProxy::readyReadStandardError);
    connect(process, &QProcess::readyReadStandardOutput, this,
            &IProcessProxy::readyReadStandardOutput);
    connect(process, &QProcess::started, this, &IProcessProxy::started);
    connect(process, &QProcess::stateChanged, this, &IProcessProxy::stateChanged);
}

QStringList ProcessProxy::arguments() const
{
    return process->arguments();
}

int ProcessProxy::exitCode() const
{
    return process->exitCode();
}

QString ProcessProxy::program() const
{
    return process->program();
}

QByteArray ProcessProxy::readAllStandardOutput()
{
    return process->readAllStandardOutput();
}

QByteArray ProcessProxy::readAllStandardError()
{
    return process->readAllStandardError();
}

// The whole command line in one text, split by QProcess::splitCommand's rules.
void ProcessProxy::start(const QString& program, QIODevice::OpenMode mode)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    process->startCommand(program, mode);
#else
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    process->start(program, mode);
    QT_WARNING_POP
#endif
}

void ProcessProxy::start(const QString& program, const QStringList& arguments,
                         QIODevice::OpenMode mode)
{
    process->start(program, arguments, mode);
}

bool ProcessProxy::waitForFinished(int msecs)
{
    return process->waitForFinished(msecs);
}

bool ProcessProxy::waitForStarted(int msecs)
{
    return process->waitForStarted(msecs);
}

qint64 ProcessProxy::bytesAvailable() const
{
    return process->bytesAvailable();
}

QByteArray ProcessProxy::readLine(qint64 maxSize)
{
    return process->readLine(maxSize);
}

void ProcessProxy::terminate()
{
    process->terminate();
}

void ProcessProxy::setWorkingDirectory(const QString& directory)
{
    process->setWorkingDirectory(directory);
}

QProcess::ExitStatus ProcessProxy::exitStatus() const
{
    return process->exitStatus();
}

} // namespace core
} // namespace base
} // namespace corvane
