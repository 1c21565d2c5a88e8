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
    FunctionLogger(const QString& owner, const QString& function);
    FunctionLogger(const QObject* sender, const QString& function);
    virtual ~FunctionLogger();

    void log(const QString& text);

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
