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
    using StringGetter = void (EntityBase::*)(QString&) const;
    using DateGetter = void (EntityBase::*)(QDate&) const;
    using DateTimeGetter = void (EntityBase::*)(QDateTime&) const;
    using IntGetter = void (EntityBase::*)(int&) const;
    using LongGetter = void (EntityBase::*)(long&) const;
    using BoolGetter = void (EntityBase::*)(bool&) const;
    using FloatGetter = void (EntityBase::*)(float&) const;
    using DoubleGetter = void (EntityBase::*)(double&) const;

    AbstractEntityBaseData();
    virtual ~AbstractEntityBaseData() = 0;

    /// String, date, date-time, int, float, double and bool names, each table in order.
    virtual QStringList keys() const;
    /// The field's value from the first table holding the name (string, date, date-time, int,
    /// long, float, double, bool); invalid when none does.
    virtual QVariant get(const QString& name, const EntityBase& entity);
    virtual bool contains(const QString& name) const;
    virtual bool isDate(const QString& name) const;
    virtual bool isString(const QString& name) const;
    virtual bool isNumber(const QString& name) const;
    virtual bool isBool(const QString& name) const;
    /// Registers the entity's getters through the setXFunction() operations.
    virtual void registerFields() = 0;

    void setStringFunction(QString name, StringGetter getter);
    void setDateFunction(QString name, DateGetter getter);
    void setDateTimeFunction(QString name, DateTimeGetter getter);
    void setIntFunction(QString name, IntGetter getter);
    void setLongFunction(QString name, LongGetter getter);
    void setFloatFunction(QString name, FloatGetter getter);
    void setDoubleFunction(QString name, DoubleGetter getter);
    void setBoolFunction(QString name, BoolGetter getter);

    // A name that is not in the table is added with a null getter (and out is null).
    void getStringFunction(const QString& name, StringGetter& getter);
    void getDateFunction(const QString& name, DateGetter& getter);
    void getDateTimeFunction(const QString& name, DateTimeGetter& getter);
    void getIntFunction(const QString& name, IntGetter& getter);
    void getLongFunction(const QString& name, LongGetter& getter);
    void getFloatFunction(const QString& name, FloatGetter& getter);
    void getDoubleFunction(const QString& name, DoubleGetter& getter);
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
