#include "QtProxies/FileProxy.h"

#include <QFile>
#include <QTextStream>

namespace corvane {
namespace base {
namespace core {

FileProxy::FileProxy() : FileProxy(QString(), nullptr) { }

FileProxy::FileProxy(QObject* parent) : FileProxy(QString(), parent) { }

FileProxy::FileProxy(const QString& name) : FileProxy(name, nullptr) { }

FileProxy::FileProxy(const QString& name, QObject* parent)
    : IFileProxy(parent), file(new QFile(name, this))
{
}

bool FileProxy::copy(const QString& newName)
{
    return file->copy(newName);
}

bool FileProxy::exists() const
{
    return file->exists();
}

bool FileProxy::link(const QString& linkName)
{
    return file->link(linkName);
}

bool FileProxy::remove()
{
    return file->remove();
}

bool FileProxy::rename(const QString& newName)
{
    return file->rename(newName);
}

QString FileProxy::symLinkTarget() const
{
    return file->symLinkTarget();
}

QString FileProxy::fileName() const
{
    return file->fileName();
}

bool FileProxy::open(QIODevice::OpenMode mode)
{
    return file->open(mode);
}

QByteArray FileProxy::readAll()
{
    return file->readAll();
}

qint64 FileProxy::write(const QByteArray& data)
{
    return file->write(data);
}

QStringList FileProxy::readLines()
{
    QStringList lines;
    QTextStream stream(file);
    while (!stream.atEnd()) {
        lines.append(stream.readLine());
    }
    return lines;
}

} // namespace core
} // namespace base
} // namespace corvane
