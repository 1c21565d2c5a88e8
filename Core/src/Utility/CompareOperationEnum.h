#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

struct CompareOperationValues
{
    enum Enum : qint32 {
        UNKNOWN = 0,
        EQUAL = 1,
        NOT_EQUAL = 2,
        LESS = 3,
        LESS_EQUAL = 4,
        GREATER = 5,
        GREATER_EQUAL = 6
    };
};

/// The comparison of a condition or range filter; the names are the operators.
class CORE_EXPORT CompareOperationEnum
    : public CompareOperationValues,
      public EnumWrapper<CompareOperationEnum, CompareOperationValues::Enum>
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
