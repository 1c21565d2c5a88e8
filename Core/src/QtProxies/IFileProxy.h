#pragma once

#include "CoreExport.h"

#include <QIODevice>
#include <QObject>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {

/// A file behind an interface, so that tests or other hosts can substitute it.
class CORE_EXPORT IFileProxy : public QObject
{
    Q_OBJECT

public:
    /// Creates the proxy as a child of parent.
    explicit IFileProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~IFileProxy() override = default;

    /// Copies the file to newName (QFile::copy()).
    virtual bool copy(const QString& newName) = 0;
    /// Whether the file exists (QFile::exists()).
    virtual bool exists() const = 0;
    /// Creates a link named linkName to the file (QFile::link()).
    virtual bool link(const QString& linkName) = 0;
    /// Removes the file (QFile::remove()).
    virtual bool remove() = 0;
    /// Renames the file to newName (QFile::rename()).
    virtual bool rename(const QString& newName) = 0;
    /// The path the file links to, empty when it is no link (QFile::symLinkTarget()).
    virtual QString symLinkTarget() const = 0;
    /// The file's name (QFile::fileName()).
    virtual QString fileName() const = 0;
    /// Opens the file in mode (QFile::open()).
    virtual bool open(QIODevice::OpenMode mode) = 0;
    /// Reads the rest of the opened file (QIODevice::readAll()).
    virtual QByteArray readAll() = 0;
    /// Writes data to the opened file; the number of bytes written, -1 on error (QIODevice::write()).
    virtual qint64 write(const QByteArray& data) = 0;
    /// The lines of the opened file, without their line ends.
    virtual QStringList readLines() = 0;
};

} // namespace core
} // namespace base
} // namespace corvane
