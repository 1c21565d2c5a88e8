#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// The values of FilterTypeEnum, which names them as FilterTypeEnum::X.
struct FilterTypeValues
{
    /// The filter kinds.
    enum Enum : qint32 {
        /// No kind, or an unknown one.
        UNKNOWN = 0,
        /// A ConditionFilter.
        CONDITION_FILTER = 1,
        /// A RangeFilter.
        RANGE_FILTER = 2,
        /// A PatternFilter.
        PATTERN_FILTER = 3,
        /// A PatternListFilter.
        PATTERN_LIST_FILTER = 4,
        /// An EqualityListFilter.
        EQUALITY_LIST_FILTER = 5
    };
};

/// The kind of a filter.
class CORE_EXPORT FilterTypeEnum : public FilterTypeValues,
                                   public EnumWrapper<FilterTypeEnum, FilterTypeValues::Enum>
{
public:
    /// Constructs the wrapper from a value as EnumWrapper does.
    using EnumWrapper::EnumWrapper;
    /// Assigns a value, a number or a name as EnumWrapper does.
    using EnumWrapper::operator=;

    /// Builds the name table: each value's number and name.
    static QMap<int, QString> initMap();
    /// Each value's number and name, built once when the library is loaded.
    static const QMap<int, QString> nameTable;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
