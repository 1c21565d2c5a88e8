#include "Utility/PatternPositionEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

const QMap<int, QString> PatternPositionEnum::nameTable = PatternPositionEnum::initMap();

QMap<int, QString> PatternPositionEnum::initMap()
{
    QMap<int, QString> table;
    table.insert(UNKNOWN, QStringLiteral("UNKNOWN"));
    table.insert(SOMEWHERE, QStringLiteral("SOMEWHERE"));
    table.insert(STARTSWITH, QStringLiteral("STARTSWITH"));
    table.insert(ENDSWITH, QStringLiteral("ENDSWITH"));
    return table;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
