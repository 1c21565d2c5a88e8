#include "Utility/DatatypeEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

const QMap<int, QString> DatatypeEnum::nameTable = DatatypeEnum::initMap();

QMap<int, QString> DatatypeEnum::initMap()
{
    QMap<int, QString> table;
    table.insert(UNKNOWN, QStringLiteral("UNKNOWN"));
    table.insert(TEXT, QStringLiteral("TEXT"));
    table.insert(NUMERIC, QStringLiteral("NUMERIC"));
    table.insert(DATE, QStringLiteral("DATE"));
    table.insert(TIME, QStringLiteral("TIME"));
    table.insert(DATETIME, QStringLiteral("DATETIME"));
    table.insert(BOOL, QStringLiteral("BOOL"));
    return table;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
