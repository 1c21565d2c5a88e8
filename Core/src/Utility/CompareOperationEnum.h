#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// The values of CompareOperationEnum, which names them as CompareOperationEnum::X.
struct CompareOperationValues
{
    /// The comparisons, named by their operators.
    enum Enum : qint32 {
        /// No comparison, or an unknown one ("UNKNOWN").
        UNKNOWN = 0,
        /// Equal ("=").
        EQUAL = 1,
        /// Not equal ("<>").
        NOT_EQUAL = 2,
        /// Less than ("<").
        LESS = 3,
        /// Less than or equal ("<=").
        LESS_EQUAL = 4,
        /// Greater than (">").
        GREATER = 5,
        /// Greater than or equal (">=").
        GREATER_EQUAL = 6
    };
};

/// The comparison of a condition or range filter; the names are the operators.
class CORE_EXPORT CompareOperationEnum
    : public CompareOperationValues,
      public EnumWrapper<CompareOperationEnum, CompareOperationValues::Enum>
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
