#pragma once

#include "Inventory/IInventory.h"

#include <Utility/AbstractEntityBaseData.h>
#include <Utility/EntityBase.h>
#include <Utility/ISerializable.h>

namespace corvane {
namespace demo {

/// An inventory item as an entity: filterable by field name and serializable.
class InventoryRecord : public base::core::entity::EntityBase,
                        public base::core::interfaces::ISerializable
{
public:
    explicit InventoryRecord(InventoryItem item = {}) : item(std::move(item)) { }

    void getName(QString& out) const { out = item.name; }
    void getQuantity(int& out) const { out = item.quantity; }
    void getPrice(double& out) const { out = item.price; }
    void getReceived(QDate& out) const { out = item.received; }

    const InventoryItem& value() const { return item; }

    QVariantMap toVariantMap() const override
    {
        return {{"item", item.name},
                {"quantity", item.quantity},
                {"price", item.price},
                {"received", item.received.toString(Qt::ISODate)}};
    }
    void fromVariantMap(const QVariantMap& values) override
    {
        item = {values.value("item").toString(), values.value("quantity").toInt(),
                values.value("price").toDouble(),
                QDate::fromString(values.value("received").toString(), Qt::ISODate)};
    }

private:
    InventoryItem item;
};

/// The fields a filter can name: "name", "quantity", "price" and "received".
class InventoryRecordData : public base::core::entity::AbstractEntityBaseData
{
public:
    InventoryRecordData() { registerFields(); }

    void registerFields() override
    {
        setStringFunction("name", static_cast<StringGetter>(&InventoryRecord::getName));
        setIntFunction("quantity", static_cast<IntGetter>(&InventoryRecord::getQuantity));
        setDoubleFunction("price", static_cast<DoubleGetter>(&InventoryRecord::getPrice));
        setDateFunction("received", static_cast<DateGetter>(&InventoryRecord::getReceived));
    }
};

} // namespace demo
} // namespace corvane
