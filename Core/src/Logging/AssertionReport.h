#pragma once

#include "CoreExport.h"

#include <QString>

namespace corvane {
namespace base {
namespace business {

/// A failed requirement, reported at critical level in Q_ASSERT's words but in every build
/// and without ending the process.
class CORE_EXPORT AssertionReport
{
public:
    /// `ASSERT: "<condition>" in file <file>, line <line>`
    static QString text(const char* condition, const char* file, int line);
    /// Writes text() as a critical Qt message when condition is false.
    static void check(bool condition, const char* text, const char* file, int line);
};

} // namespace business
} // namespace base
} // namespace corvane
