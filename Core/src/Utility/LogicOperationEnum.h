#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

struct LogicOperationValues
{
    enum Enum : qint32 { UNKNOWN = 0, NOP = 1, AND = 2, OR = 3, NOT = 4, AND_NOT = 5, OR_NOT = 6 };
};

/// How a filter's result joins the results before it.
class CORE_EXPORT LogicOperationEnum
    : public LogicOperationValues,
      public EnumWrapper<LogicOperationEnum, LogicOperationValues::Enum>
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
