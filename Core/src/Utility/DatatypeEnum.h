#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

struct DatatypeValues
{
    enum Enum : qint32 {
        UNKNOWN = 0,
        TEXT = 1,
        NUMERIC = 2,
        DATE = 3,
        TIME = 4,
        DATETIME = 5,
        BOOL = 6
    };
};

/// How a field's text is compared.
class CORE_EXPORT DatatypeEnum : public DatatypeValues,
                                 public EnumWrapper<DatatypeEnum, DatatypeValues::Enum>
{
public:
    using EnumWrapper::EnumWrapper;
    using EnumWrapper::operator=;

    static QMap<int, QString> initMap();
    static const QMap<int, QString> nameTable;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
