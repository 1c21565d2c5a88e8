#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// The values of LogicOperationEnum, which names them as LogicOperationEnum::X.
struct LogicOperationValues
{
    /// The logic operations; AND NOT and OR NOT are named with a blank ("AND NOT").
    enum Enum : qint32 { UNKNOWN = 0, NOP = 1, AND = 2, OR = 3, NOT = 4, AND_NOT = 5, OR_NOT = 6 };
    /** \var UNKNOWN
     * No operation, or an unknown one. */
    /** \var NOP
     * Opens a chain: its first filter as it is. */
    /** \var AND
     * Both must hold. */
    /** \var OR
     * One of them must hold. */
    /** \var NOT
     * Opens a chain: the whole chain negated. */
    /** \var AND_NOT
     * The results before must hold and this filter must not ("AND NOT"). */
    /** \var OR_NOT
     * The results before must hold, or this filter must not ("OR NOT"). */
};

/// How a filter's result joins the results before it.
class CORE_EXPORT LogicOperationEnum
    : public LogicOperationValues,
      public EnumWrapper<LogicOperationEnum, LogicOperationValues::Enum>
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
