#pragma once

#include "CoreExport.h"
#include "Utility/EntityBase.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QMap>
#include <QStringList>
#include <QVariant>

namespace corvane {
namespace base {
namespace core {
namespace entity {

/**
 * The typed field table of one entity class: field names (case-sensitive) mapped to the
 * entity's getters, one table per type. A concrete data class registers its entity's getters,
 * typically in its constructor:
 *
 *     setDoubleFunction("price", static_cast<DoubleGetter>(&Item::getPrice));
 *
 * The long table is deliberately left out of keys(), contains(), isNumber() and clear(): a
 * long field can be read by name but is invisible to the field queries.
 */
class CORE_EXPORT AbstractEntityBaseData
{
public:
    /// A getter of a text field.
    using StringGetter = void (EntityBase::*)(QString&) const;
    /// A getter of a date field.
    using DateGetter = void (EntityBase::*)(QDate&) const;
    /// A getter of a date-time field.
    using DateTimeGetter = void (EntityBase::*)(QDateTime&) const;
    /// A getter of an int field.
    using IntGetter = void (EntityBase::*)(int&) const;
    /// A getter of a long field.
    using LongGetter = void (EntityBase::*)(long&) const;
    /// A getter of a bool field.
    using BoolGetter = void (EntityBase::*)(bool&) const;
    /// A getter of a float field.
    using FloatGetter = void (EntityBase::*)(float&) const;
    /// A getter of a double field.
    using DoubleGetter = void (EntityBase::*)(double&) const;

    /// Empty tables; a subclass fills them (registerFields()).
    AbstractEntityBaseData();
    virtual ~AbstractEntityBaseData() = 0;

    /// String, date, date-time, int, float, double and bool names, each table in order.
    virtual QStringList keys() const;
    /// The field's value from the first table holding the name (string, date, date-time, int,
    /// long, float, double, bool); invalid when none does.
    virtual QVariant get(const QString& name, const EntityBase& entity);
    /// Whether name is a string, date, date-time, numeric or bool field.
    virtual bool contains(const QString& name) const;
    /// Whether name is a date or date-time field.
    virtual bool isDate(const QString& name) const;
    /// Whether name is a string field.
    virtual bool isString(const QString& name) const;
    /// Whether name is an int, float or double field.
    virtual bool isNumber(const QString& name) const;
    /// Whether name is a bool field.
    virtual bool isBool(const QString& name) const;
    /// Registers the entity's getters through the setXFunction() operations.
    virtual void registerFields() = 0;

    /// Registers getter as the string field name, replacing an earlier getter of that name.
    void setStringFunction(QString name, StringGetter getter);
    /// Registers getter as the date field name.
    void setDateFunction(QString name, DateGetter getter);
    /// Registers getter as the date-time field name.
    void setDateTimeFunction(QString name, DateTimeGetter getter);
    /// Registers getter as the int field name.
    void setIntFunction(QString name, IntGetter getter);
    /// Registers getter as the long field name.
    void setLongFunction(QString name, LongGetter getter);
    /// Registers getter as the float field name.
    void setFloatFunction(QString name, FloatGetter getter);
    /// Registers getter as the double field name.
    void setDoubleFunction(QString name, DoubleGetter getter);
    /// Registers getter as the bool field name.
    void setBoolFunction(QString name, BoolGetter getter);

    // A name that is not in the table is added with a null getter (and out is null).
    /// Copies the getter of the string field name into getter.
    void getStringFunction(const QString& name, StringGetter& getter);
    /// Copies the getter of the date field name into getter.
    void getDateFunction(const QString& name, DateGetter& getter);
    /// Copies the getter of the date-time field name into getter.
    void getDateTimeFunction(const QString& name, DateTimeGetter& getter);
    /// Copies the getter of the int field name into getter.
    void getIntFunction(const QString& name, IntGetter& getter);
    /// Copies the getter of the long field name into getter.
    void getLongFunction(const QString& name, LongGetter& getter);
    /// Copies the getter of the float field name into getter.
    void getFloatFunction(const QString& name, FloatGetter& getter);
    /// Copies the getter of the double field name into getter.
    void getDoubleFunction(const QString& name, DoubleGetter& getter);
    /// Copies the getter of the bool field name into getter.
    void getBoolFunction(const QString& name, BoolGetter& getter);

    /// Empties every table but the long table.
    void clear();

private:
    // Which table get() reads a name from, and its getter: kept up to date by every change
    // of the tables, so that get() is one hash lookup and never writes.
    struct Field
    {
        enum Kind { String, Date, DateTime, Int, Long, Float, Double, Bool } kind;
        StringGetter string = nullptr;
        DateGetter date = nullptr;
        DateTimeGetter dateTime = nullptr;
        IntGetter integer = nullptr;
        LongGetter longInteger = nullptr;
        FloatGetter floating = nullptr;
        DoubleGetter doubleFloating = nullptr;
        BoolGetter boolean = nullptr;
    };
    void index(const QString& name);

    QHash<QString, Field> fields;
    QMap<QString, StringGetter> stringFunctions;
    QMap<QString, DateGetter> dateFunctions;
    QMap<QString, DateTimeGetter> dateTimeFunctions;
    QMap<QString, IntGetter> intFunctions;
    QMap<QString, LongGetter> longFunctions;
    QMap<QString, BoolGetter> boolFunctions;
    QMap<QString, FloatGetter> floatFunctions;
    QMap<QString, DoubleGetter> doubleFunctions;
};

} // namespace entity
} // namespace core
} // namespace base
} // namespace corvane
