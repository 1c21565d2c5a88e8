#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

struct FilterTypeValues
{
    enum Enum : qint32 {
        UNKNOWN = 0,
        CONDITION_FILTER = 1,
        RANGE_FILTER = 2,
        PATTERN_FILTER = 3,
        PATTERN_LIST_FILTER = 4,
        EQUALITY_LIST_FILTER = 5
    };
};

/// The kind of a filter.
class CORE_EXPORT FilterTypeEnum : public FilterTypeValues,
                                   public EnumWrapper<FilterTypeEnum, FilterTypeValues::Enum>
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
