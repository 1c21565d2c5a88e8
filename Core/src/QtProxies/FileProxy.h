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
    FileProxy();
    explicit FileProxy(QObject* parent);
    explicit FileProxy(const QString& name);
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
