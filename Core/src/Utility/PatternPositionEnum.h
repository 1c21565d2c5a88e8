#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

struct PatternPositionValues
{
    enum Enum : qint32 { UNKNOWN = 0, SOMEWHERE = 1, STARTSWITH = 2, ENDSWITH = 3 };
};

/// Where a pattern must occur in a field's text.
class CORE_EXPORT PatternPositionEnum
    : public PatternPositionValues,
      public EnumWrapper<PatternPositionEnum, PatternPositionValues::Enum>
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
