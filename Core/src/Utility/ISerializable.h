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
    virtual QVariantMap toVariantMap() const = 0;
    virtual void fromVariantMap(const QVariantMap& values) = 0;
};

} // namespace interfaces
} // namespace core
} // namespace base
} // namespace corvane
