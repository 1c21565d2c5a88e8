#include "Utility/FilterTypeEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

const QMap<int, QString> FilterTypeEnum::nameTable = FilterTypeEnum::initMap();

QMap<int, QString> FilterTypeEnum::initMap()
{
    QMap<int, QString> table;
    table.insert(UNKNOWN, QStringLiteral("UNKNOWN"));
    table.insert(CONDITION_FILTER, QStringLiteral("CONDITION_FILTER"));
    table.insert(RANGE_FILTER, QStringLiteral("RANGE_FILTER"));
    table.insert(PATTERN_FILTER, QStringLiteral("PATTERN_FILTER"));
    table.insert(PATTERN_LIST_FILTER, QStringLiteral("PATTERN_LIST_FILTER"));
    table.insert(EQUALITY_LIST_FILTER, QStringLiteral("EQUALITY_LIST_FILTER"));
    return table;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
