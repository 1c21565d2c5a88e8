#include "Utility/LogicOperationEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

const QMap<int, QString> LogicOperationEnum::nameTable = LogicOperationEnum::initMap();

QMap<int, QString> LogicOperationEnum::initMap()
{
    QMap<int, QString> table;
    table.insert(UNKNOWN, QStringLiteral("UNKNOWN"));
    table.insert(NOP, QStringLiteral("NOP"));
    table.insert(AND, QStringLiteral("AND"));
    table.insert(OR, QStringLiteral("OR"));
    table.insert(NOT, QStringLiteral("NOT"));
    table.insert(AND_NOT, QStringLiteral("AND NOT"));
    table.insert(OR_NOT, QStringLiteral("OR NOT"));
    return table;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
