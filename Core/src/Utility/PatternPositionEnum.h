#pragma once

#include "CoreExport.h"
#include "Utility/EnumWrapper.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// The values of PatternPositionEnum, which names them as PatternPositionEnum::X.
struct PatternPositionValues
{
    /// The positions of a pattern in a text.
    enum Enum : qint32 { UNKNOWN = 0, SOMEWHERE = 1, STARTSWITH = 2, ENDSWITH = 3 };
    /** \var UNKNOWN
     * No position, or an unknown one. */
    /** \var SOMEWHERE
     * Anywhere in the text. */
    /** \var STARTSWITH
     * At the start of the text. */
    /** \var ENDSWITH
     * At the end of the text. */
};

/// Where a pattern must occur in a field's text.
class CORE_EXPORT PatternPositionEnum
    : public PatternPositionValues,
      public EnumWrapper<PatternPositionEnum, PatternPositionValues::Enum>
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
