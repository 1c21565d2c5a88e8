#include "Utility/CompareOperationEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

const QMap<int, QString> CompareOperationEnum::nameTable = CompareOperationEnum::initMap();

QMap<int, QString> CompareOperationEnum::initMap()
{
    QMap<int, QString> table;
    table.insert(UNKNOWN, QStringLiteral("UNKNOWN"));
    table.insert(EQUAL, QStringLiteral("="));
    table.insert(NOT_EQUAL, QStringLiteral("<>"));
    table.insert(LESS, QStringLiteral("<"));
    table.insert(LESS_EQUAL, QStringLiteral("<="));
    table.insert(GREATER, QStringLiteral(">"));
    table.insert(GREATER_EQUAL, QStringLiteral(">="));
    return table;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
