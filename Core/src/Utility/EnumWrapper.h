#pragma once

#include <QMap>
#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/**
 * The shape shared by the filter enumerations: a value convertible to and from an integer and
 * a fixed name. Derived supplies its table as `static const QMap<int, QString> nameTable`,
 * filled once at library load by its `initMap()`.
 *
 * Asymmetric on purpose: constructing from Enum stores any value, assigning an int or a name
 * stores UNKNOWN (0) for one that is not in the table, and asName() of a value that is not in
 * the table is empty (only 0 is "UNKNOWN").
 */
template <class Derived, class Enum>
class EnumWrapper
{
public:
    /// The value UNKNOWN (0).
    EnumWrapper() = default;
    /// The value value, stored as given, also when it is not in the name table.
    EnumWrapper(Enum value) : value(value) { }
    virtual ~EnumWrapper() = default;

    /// Stores newValue as given.
    Derived operator=(Enum newValue)
    {
        value = newValue;
        return static_cast<Derived&>(*this);
    }
    /// Stores the value numbered newValue, UNKNOWN (0) when the table has no such value.
    int operator=(int newValue)
    {
        value = asEnum(newValue);
        return value;
    }
    /// Stores the value named name, UNKNOWN (0) when the table has no such name.
    int operator=(QString name)
    {
        value = asEnum(name);
        return value;
    }

    /// The stored value.
    operator Enum() const { return value; }
    /// The stored value's name; empty when it is not in the table.
    operator const QString() const { return asName(value); }
    /// Whether the stored value is the one named name (UNKNOWN for an unknown name).
    bool operator==(QString name) const { return value == asEnum(name); }

    /// The name of enumValue; empty when it is not in the table.
    static QString asName(Enum enumValue)
    {
        const QMap<int, QString> table = Derived::nameTable;
        QString name;
        for (auto entry = table.cbegin(); entry != table.cend(); ++entry) {
            if (entry.key() == enumValue) {
                name = entry.value();
            }
        }
        return name;
    }

    /// The value numbered number; UNKNOWN (0) when the table has no such value.
    static Enum asEnum(int number)
    {
        const QMap<int, QString> table = Derived::nameTable;
        int found = 0;
        for (auto entry = table.cbegin(); entry != table.cend(); ++entry) {
            if (entry.key() == number) {
                found = number;
            }
        }
        return static_cast<Enum>(found);
    }

    /// The value named name (exact, case-sensitive); UNKNOWN (0) when the table has no such name.
    static Enum asEnum(QString name)
    {
        const QMap<int, QString> table = Derived::nameTable;
        int found = 0;
        for (auto entry = table.cbegin(); entry != table.cend(); ++entry) {
            if (entry.value() == name) {
                found = entry.key();
            }
        }
        return static_cast<Enum>(found);
    }

private:
    Enum value = static_cast<Enum>(0);
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
