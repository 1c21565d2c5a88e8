#include "Logging/AssertionReport.h"

#include <QDebug>

namespace corvane {
namespace base {
namespace business {

QString AssertionReport::text(const char* condition, const char* file, int line)
{
    return QString::asprintf("ASSERT: \"%s\" in file %s, line %d", condition, file, line);
}

void AssertionReport::check(bool condition, const char* text, const char* file, int line)
{
    if (!condition) {
        qCritical().noquote() << AssertionReport::text(text, file, line);
    }
}

} // namespace business
} // namespace base
} // namespace corvane
