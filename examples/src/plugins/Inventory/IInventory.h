#pragma once

#include <QDate>
#include <QList>
#include <QString>
#include <QtPlugin>

namespace corvane {
namespace demo {

struct InventoryItem
{
    QString name;
    int quantity = 0;
    double price = 0;
    QDate received;
};

/// The stock of the demo shop, provided by the Inventory plug-in.
class IInventory
{
public:
    virtual ~IInventory() = default;
    virtual QList<InventoryItem> items() const = 0;
    /// Where the records came from.
    virtual QString source() const = 0;
};

} // namespace demo
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::demo::IInventory, "de.corvane.demo.IInventory/1.0")
