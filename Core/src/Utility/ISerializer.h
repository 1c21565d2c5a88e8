#pragma once

#include "CoreExport.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace interfaces {

class ISerializable;

/// Writes serializable objects in one format (CSV, JSON, ...) and reads them back.
class CORE_EXPORT ISerializer
{
public:
    virtual ~ISerializer();
    /// The format's name, such as "CSV" or "JSON".
    virtual QString getFormat() const = 0;
    /// The objects, in order, written in the format.
    virtual QByteArray serialize(const QList<const ISerializable*>& objects) = 0;
    /// Fills objects in order; answers false when data is not in this format.
    virtual bool deserialize(const QByteArray& data, const QList<ISerializable*>& objects) = 0;
};

} // namespace interfaces
} // namespace core
} // namespace base
} // namespace corvane
