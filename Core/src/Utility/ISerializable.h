#pragma once

#include "CoreExport.h"

#include <QVariantMap>

namespace corvane {
namespace base {
namespace core {
namespace interfaces {

/// Something a serializer can write and read: it describes itself as named values.
class CORE_EXPORT ISerializable
{
public:
    virtual ~ISerializable();
    /// The object's values by name.
    virtual QVariantMap toVariantMap() const = 0;
    /// Takes its values from values, as toVariantMap() writes them.
    virtual void fromVariantMap(const QVariantMap& values) = 0;
};

} // namespace interfaces
} // namespace core
} // namespace base
} // namespace corvane
