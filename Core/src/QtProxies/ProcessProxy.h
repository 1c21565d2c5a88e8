#pragma once

#include "QtProxies/IProcessProxy.h"

namespace corvane {
namespace base {
namespace core {

/// IProcessProxy over a QProcess that the proxy owns; the process's signals are relayed.
class CORE_EXPORT ProcessProxy : public IProcessProxy
{
    Q_OBJECT

public:
    /// Creates the process and relays its signals, as a child of parent.
    explicit ProcessProxy(QObject* parent = nullptr);

    QStringList arguments() const override;
    int exitCode() const override;
    QString program() const override;
    QByteArray readAllStandardOutput() override;
    QByteArray readAllStandardError() override;
    void start(const QString& program, QIODevice::OpenMode mode = QIODevice::ReadWrite) override;
    void start(const QString& program, const QStringList& arguments,
               QIODevice::OpenMode mode = QIODevice::ReadWrite) override;
    bool waitForFinished(int msecs = 30000) override;
    bool waitForStarted(int msecs = 30000) override;
    qint64 bytesAvailable() const override;
    QByteArray readLine(qint64 maxSize = 0) override;
    void terminate() override;
    void setWorkingDirectory(const QString& directory) override;
    QProcess::ExitStatus exitStatus() const override;

private:
    QProcess* process;
};

} // namespace core
} // namespace base
} // namespace corvane
