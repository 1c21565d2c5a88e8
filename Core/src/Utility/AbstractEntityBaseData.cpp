#include "Utility/AbstractEntityBaseData.h"

namespace corvane {
namespace base {
namespace core {
namespace entity {

namespace {

// A null getter (left by a lookup of an unknown name) gives the type's default value instead
// of a call through null.
template <class T, class Getter>
T read(Getter getter, const EntityBase& entity)
{
    T value {};
    if (getter != nullptr) {
        (entity.*getter)(value);
    }
    return value;
}

} // namespace

AbstractEntityBaseData::AbstractEntityBaseData() = default;

AbstractEntityBaseData::~AbstractEntityBaseData() = default;

QStringList AbstractEntityBaseData::keys() const
{
    return stringFunctions.keys() + dateFunctions.keys() + dateTimeFunctions.keys()
        + intFunctions.keys() + floatFunctions.keys() + doubleFunctions.keys()
        + boolFunctions.keys();
}

QVariant AbstractEntityBaseData::get(const QString& name, const EntityBase& entity)
{
    const auto found = fields.constFind(name);
    if (found == fields.constEnd()) {
        return QVariant();
    }
    const Field& field = found.value();
    switch (field.kind) {
    case Field::String:
        return read<QString>(field.string, entity);
    case Field::Date:
        return read<QDate>(field.date, entity);
    case Field::DateTime:
        return read<QDateTime>(field.dateTime, entity);
    case Field::Int:
        return read<int>(field.integer, entity);
    case Field::Long:
        return qlonglong(read<long>(field.longInteger, entity));
    case Field::Float:
        return read<float>(field.floating, entity);
    case Field::Double:
        return read<double>(field.doubleFloating, entity);
    case Field::Bool:
        return read<bool>(field.boolean, entity);
    }
    return QVariant();
}

// The first table holding the name, in get()'s order: string, date, date-time, int, long,
// float, double, bool.
void AbstractEntityBaseData::index(const QString& name)
{
    Field field {Field::String};
    if (stringFunctions.contains(name)) {
        field.string = stringFunctions.value(name);
    } else if (dateFunctions.contains(name)) {
        field = {Field::Date};
        field.date = dateFunctions.value(name);
    } else if (dateTimeFunctions.contains(name)) {
        field = {Field::DateTime};
        field.dateTime = dateTimeFunctions.value(name);
    } else if (intFunctions.contains(name)) {
        field = {Field::Int};
        field.integer = intFunctions.value(name);
    } else if (longFunctions.contains(name)) {
        field = {Field::Long};
        field.longInteger = longFunctions.value(name);
    } else if (floatFunctions.contains(name)) {
        field = {Field::Float};
        field.floating = floatFunctions.value(name);
    } else if (doubleFunctions.contains(name)) {
        field = {Field::Double};
        field.doubleFloating = doubleFunctions.value(name);
    } else if (boolFunctions.contains(name)) {
        field = {Field::Bool};
        field.boolean = boolFunctions.value(name);
    } else {
        fields.remove(name);
        return;
    }
    fields.insert(name, field);
}

bool AbstractEntityBaseData::contains(const QString& name) const
{
    return isString(name) || isDate(name) || isNumber(name) || isBool(name);
}

bool AbstractEntityBaseData::isDate(const QString& name) const
{
    return dateFunctions.contains(name) || dateTimeFunctions.contains(name);
}

bool AbstractEntityBaseData::isString(const QString& name) const
{
    return stringFunctions.contains(name);
}

bool AbstractEntityBaseData::isNumber(const QString& name) const
{
    return intFunctions.contains(name) || floatFunctions.contains(name)
        || doubleFunctions.contains(name);
}

bool AbstractEntityBaseData::isBool(const QString& name) const
{
    return boolFunctions.contains(name);
}

#define CORVANE_FIELD_FUNCTIONS(Kind, Getter, table)                                               \
    void AbstractEntityBaseData::set##Kind##Function(QString name, Getter getter)                  \
    {                                                                                              \
        table.insert(name, getter);                                                                \
        index(name);                                                                               \
    }                                                                                              \
    void AbstractEntityBaseData::get##Kind##Function(const QString& name, Getter& getter)          \
    {                                                                                              \
        getter = table[name];                                                                      \
        index(name);                                                                               \
    }

CORVANE_FIELD_FUNCTIONS(String, StringGetter, stringFunctions)
CORVANE_FIELD_FUNCTIONS(Date, DateGetter, dateFunctions)
CORVANE_FIELD_FUNCTIONS(DateTime, DateTimeGetter, dateTimeFunctions)
CORVANE_FIELD_FUNCTIONS(Int, IntGetter, intFunctions)
CORVANE_FIELD_FUNCTIONS(Long, LongGetter, longFunctions)
CORVANE_FIELD_FUNCTIONS(Float, FloatGetter, floatFunctions)
CORVANE_FIELD_FUNCTIONS(Double, DoubleGetter, doubleFunctions)
CORVANE_FIELD_FUNCTIONS(Bool, BoolGetter, boolFunctions)

#undef CORVANE_FIELD_FUNCTIONS

void AbstractEntityBaseData::clear()
{
    stringFunctions.clear();
    dateFunctions.clear();
    dateTimeFunctions.clear();
    intFunctions.clear();
    boolFunctions.clear();
    floatFunctions.clear();
    doubleFunctions.clear();
    fields.clear();
    for (const QString& name : longFunctions.keys()) {
        index(name);
    }
}

} // namespace entity
} // namespace core
} // namespace base
} // namespace corvane
