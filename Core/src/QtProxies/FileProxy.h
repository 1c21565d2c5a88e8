#pragma once

#include "QtProxies/IFileProxy.h"

class QFile;

namespace corvane {
namespace base {
namespace core {

/// IFileProxy over a QFile that the proxy owns.
class CORE_EXPORT FileProxy : public IFileProxy
{
    Q_OBJECT

public:
    /// A proxy without a file name and without parent.
    FileProxy();
    /// A proxy without a file name, as a child of parent.
    explicit FileProxy(QObject* parent);
    /// A proxy for the file name, without parent.
    explicit FileProxy(const QString& name);
    /// A proxy for the file name, as a child of parent.
    FileProxy(const QString& name, QObject* parent);

    bool copy(const QString& newName) override;
    bool exists() const override;
    bool link(const QString& linkName) override;
    bool remove() override;
    bool rename(const QString& newName) override;
    QString symLinkTarget() const override;
    QString fileName() const override;
    bool open(QIODevice::OpenMode mode) override;
    QByteArray readAll() override;
    qint64 write(const QByteArray& data) override;
    QStringList readLines() override;

private:
    QFile* file;
};

} // namespace core
} // namespace base
} // namespace corvane
