#pragma once

#include "CoreExport.h"

#include <QDomElement>
#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/**
 * Reads typed values from the child elements of a DOM element, e.g. from the "configuration"
 * element a plug-in receives. Each reader looks at the first child element named exactly tag;
 * it answers false and leaves the output untouched when there is none, when its text does not
 * fit the type, or when the output pointer is null.
 */
class CORE_EXPORT XMLHelper
{
public:
    /// A decimal integer, sign allowed.
    static bool readIntFromXML(const QDomElement& parent, const QString& tag, int* value);
    /// Exactly "true" or "false", in any case.
    static bool readBoolFromXML(const QDomElement& parent, const QString& tag, bool* value);
    /// Any text, also an empty one.
    static bool readStringFromXML(const QDomElement& parent, const QString& tag, QString* value);
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
