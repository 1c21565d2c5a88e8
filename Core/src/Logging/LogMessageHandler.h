#pragma once

#include "CoreExport.h"

#include <QString>
#include <QtGlobal>

class QMessageLogContext;

namespace corvane {
namespace logging {

/// The bare name of a function as Qt records it: no return type, scope or parameters
/// ("void a::B::run(int) const" gives "run").
CORE_EXPORT QString sanitizeFunction(const char* function);

/// A dotted logger name from a source path: the extension dropped and, when a "src" folder
/// follows the first part, only what comes after the first "src"
/// ("C:\build\Core\src\Logging\LoggingManager.cpp" gives "Logging.LoggingManager").
CORE_EXPORT QString sanitizeSource(const char* file);

/// "function(line): message".
CORE_EXPORT QString formatLogMessage(const QMessageLogContext& context, const QString& message);

/// Routes Qt's messages into the logging manager, to the logger named after the writing source
/// file; a written fatal message ends the process. Install it with qInstallMessageHandler.
CORE_EXPORT void log4cxxMessageHandler(QtMsgType type, const QMessageLogContext& context,
                                       const QString& message);

/// Whether a message of this type written from this source file would be logged, so that a
/// caller can skip building many lines nobody reads. False only when Qt's default category
/// filters the type out, or when log4cplus's logger for the file (as named by the handler)
/// would drop it.
CORE_EXPORT bool isMessageEnabled(QtMsgType type, const char* file);

/// Tells the handler that a library was unloaded, so that it no longer trusts the addresses of
/// the texts that name the places writing messages. The plug-in manager calls it.
CORE_EXPORT void forgetMessagePlaces();

} // namespace logging
} // namespace corvane
