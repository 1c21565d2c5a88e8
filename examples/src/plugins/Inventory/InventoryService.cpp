#include "Inventory/InventoryService.h"

#include <Exceptions/Exceptions.h>

#include <QDebug>
#include <QFile>
#include <QTextStream>

namespace corvane {
namespace demo {

void InventoryService::setFile(const QString& path)
{
    file = path;
}

void InventoryService::initialize()
{
    QFile csv(file);
    if (!csv.open(QIODevice::ReadOnly | QIODevice::Text)) {
        throw base::exceptions::FileNotFoundException(
            this, QStringLiteral("initialize"),
            QStringLiteral("Cannot read the inventory %1: %2").arg(file, csv.errorString()));
    }
    QTextStream lines(&csv);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    lines.setEncoding(QStringConverter::Utf8);
#else
    lines.setCodec("UTF-8");
#endif
    lines.readLine(); // header
    records.clear();
    for (int number = 2; !lines.atEnd(); ++number) {
        const QStringList fields = lines.readLine().split(QLatin1Char(','));
        bool quantityOk = false;
        bool priceOk = false;
        InventoryItem item {fields.value(0).trimmed(), fields.value(1).toInt(&quantityOk),
                            fields.value(2).toDouble(&priceOk),
                            QDate::fromString(fields.value(3).trimmed(), Qt::ISODate)};
        if (fields.size() != 4 || !quantityOk || !priceOk || item.name.isEmpty()
            || !item.received.isValid()) {
            qWarning().noquote()
                << QStringLiteral("initialize: skipped line %1 of %2").arg(number).arg(file);
            continue;
        }
        records.append(item);
    }
    qInfo().noquote()
        << QStringLiteral("initialize: %1 records read from %2").arg(records.size()).arg(file);
    AbstractService::initialize();
}

QList<InventoryItem> InventoryService::items() const
{
    return records;
}

QString InventoryService::source() const
{
    return file;
}

} // namespace demo
} // namespace corvane
