#include "Logging/FunctionLogger.h"

#include "Interfaces/ILoggingManager.h"

#include <QMetaObject>

namespace corvane {
namespace base {
namespace business {

int FunctionLogger::depth = 0;
const QString FunctionLogger::indentUnit = QStringLiteral("=>|");
interfaces::ILoggingManager* FunctionLogger::loggingManager = nullptr;

FunctionLogger::FunctionLogger(const QString& owner, const QString& function)
    : owner(owner), function(function)
{
    ++depth;
    log(QStringLiteral("entered"));
}

FunctionLogger::FunctionLogger(const QObject* sender, const QString& function)
    : FunctionLogger(sender != nullptr ? QString::fromUtf8(sender->metaObject()->className())
                                       : QStringLiteral("unknown source"),
                     function)
{
}

FunctionLogger::~FunctionLogger()
{
    log(QStringLiteral("left"));
    --depth;
}

// The indented text is the logger name of the entry, so the nesting shows wherever the layout
// prints the logger.
void FunctionLogger::log(const QString& text)
{
    if (loggingManager == nullptr) {
        return;
    }
    const QString source = QStringLiteral("||%1 %2").arg(indentUnit.repeated(depth - 1), owner);
    const QString message = QStringLiteral("%1() %2").arg(function, text);
    loggingManager->logEntry(interfaces::ILoggingManager::INFO, source, message, false);
}

void FunctionLogger::setLoggingManager(interfaces::ILoggingManager* loggingManager)
{
    FunctionLogger::loggingManager = loggingManager;
}

} // namespace business
} // namespace base
} // namespace corvane
