#include "Utility/AbstractEntityBaseData.h"

namespace corvane {
namespace base {
namespace core {
namespace entity {

namespace {

// Reads a field through its getter; a null getter (left by a lookup of an unknown name)
// gives the type's default value instead of a call through null.
// Stored is the type the value is wrapped as (a long becomes a 64-bit qlonglong).
template <class T, class Stored = T, class Getter>
bool read(const QMap<QString, Getter>& table, const QString& name, const EntityBase& entity,
          QVariant& value)
{
    const auto found = table.constFind(name);
    if (found == table.constEnd()) {
        return false;
    }
    T field {};
    if (found.value() != nullptr) {
        (entity.*found.value())(field);
    }
    value = QVariant::fromValue(Stored(field));
    return true;
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
    QVariant value;
    read<QString>(stringFunctions, name, entity, value)
        || read<QDate>(dateFunctions, name, entity, value)
        || read<QDateTime>(dateTimeFunctions, name, entity, value)
        || read<int>(intFunctions, name, entity, value)
        || read<long, qlonglong>(longFunctions, name, entity, value)
        || read<float>(floatFunctions, name, entity, value)
        || read<double>(doubleFunctions, name, entity, value)
        || read<bool>(boolFunctions, name, entity, value);
    return value;
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
    }                                                                                              \
    void AbstractEntityBaseData::get##Kind##Function(const QString& name, Getter& getter)          \
    {                                                                                              \
        getter = table[name];                                                                      \
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
}

} // namespace entity
} // namespace core
} // namespace base
} // namespace corvane
