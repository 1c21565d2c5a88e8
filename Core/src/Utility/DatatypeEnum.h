#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// The values of DatatypeEnum, which names them as DatatypeEnum::X.
struct DatatypeValues
{
    /// The data types of a field.
    enum Enum : qint32 {
        /// No data type, or an unknown one.
        UNKNOWN = 0,
        /// Text, compared as text.
        TEXT = 1,
        /// A number.
        NUMERIC = 2,
        /// A date.
        DATE = 3,
        /// A time of day.
        TIME = 4,
        /// A date with a time of day.
        DATETIME = 5,
        /// True or false.
        BOOL = 6
    };
};

/// How a field's text is compared.
class CORE_EXPORT DatatypeEnum : public DatatypeValues,
                                 public EnumWrapper<DatatypeEnum, DatatypeValues::Enum>
{
public:
    /// Constructs the wrapper from a value as EnumWrapper does.
    using EnumWrapper::EnumWrapper;
    /// Assigns a value, a number or a name as EnumWrapper does.
    using EnumWrapper::operator=;

    /// Builds the name table: each value's number and name.
    static QMap<int, QString> initMap();
    /// Each value's number and name, built once when the library is loaded.
    static const QMap<int, QString> nameTable;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
