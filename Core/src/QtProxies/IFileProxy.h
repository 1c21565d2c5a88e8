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
    explicit IFileProxy(QObject* parent = nullptr) : QObject(parent) { }
    ~IFileProxy() override = default;

    virtual bool copy(const QString& newName) = 0;
    virtual bool exists() const = 0;
    virtual bool link(const QString& linkName) = 0;
    virtual bool remove() = 0;
    virtual bool rename(const QString& newName) = 0;
    virtual QString symLinkTarget() const = 0;
    virtual QString fileName() const = 0;
    virtual bool open(QIODevice::OpenMode mode) = 0;
    virtual QByteArray readAll() = 0;
    virtual qint64 write(const QByteArray& data) = 0;
    /// The lines of the opened file, without their line ends.
    virtual QStringList readLines() = 0;
};

} // namespace core
} // namespace base
} // namespace corvane
