#pragma once

#include "Inventory/IInventory.h"

#include <Utility/AbstractService.h>

namespace corvane {
namespace demo {

/// Reads the records of a CSV file ("name,quantity,price,received" after a header line, the
/// date as yyyy-MM-dd) when it is
/// initialized.
class InventoryService : public base::core::utility::AbstractService, public IInventory
{
    Q_OBJECT
    Q_INTERFACES(corvane::demo::IInventory)

public:
    void setFile(const QString& path);

    void initialize() override;
    QList<InventoryItem> items() const override;
    QString source() const override;

private:
    QString file = QStringLiteral("inventory.csv");
    QList<InventoryItem> records;
};

} // namespace demo
} // namespace corvane
