#pragma once

#include "CoreExport.h"

#include <QString>

class QObject;

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace business {

/**
 * Logs "entered" when created and "left" when destroyed, at info level, to a logger whose name
 * shows the nesting depth: "||" + "=>|" per enclosing logger + " " + owner. Create one as a
 * local object at the top of a function. Depth is counted across all threads; nothing is
 * written until setLoggingManager() has been called.
 */
class CORE_EXPORT FunctionLogger
{
public:
    /// Logs "function() entered" for owner (a class or other name) one level deeper.
    FunctionLogger(const QString& owner, const QString& function);
    /// As the owner form, with sender's class name as owner ("unknown source" for null).
    FunctionLogger(const QObject* sender, const QString& function);
    virtual ~FunctionLogger();

    /// Writes "function() text" at the logger's depth.
    void log(const QString& text);

    /// Sets the logging manager all function loggers write to; null stops them writing.
    static void setLoggingManager(interfaces::ILoggingManager* loggingManager);

private:
    Q_DISABLE_COPY(FunctionLogger)

    QString owner;
    QString function;

    static int depth;
    static const QString indentUnit;
    static interfaces::ILoggingManager* loggingManager;
};

} // namespace business
} // namespace base
} // namespace corvane
