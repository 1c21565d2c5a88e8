#pragma once

#include "CoreExport.h"

#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Expansion of environment variable references (${NAME}) in texts.
class CORE_EXPORT SystemEnvironment
{
public:
    /**
     * Replaces every ${NAME} (NAME of letters, digits and underscores) by the value of the
     * environment variable NAME, from the last reference towards the first; references inside
     * a value are expanded as well. Throws InvalidArgumentException naming the variable when
     * one is not set or empty, when a value keeps referring back to itself, or when the values
     * put in add up to more than maximumExpandedSize characters. Takes time in proportion to
     * the text it produces.
     */
    static QString expandEnvironmentVariables(const QString& text);

    /// The most characters that the values of one expansion may add up to.
    static constexpr qint64 maximumExpandedSize = 1024 * 1024;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
