#include "Logging/LogMessageHandler.h"

#include "Logging/LoggingManager.h"

#include <QLoggingCategory>
#include <QRegExp>
#include <QStringList>

#include <cstdlib>

namespace corvane {
namespace logging {

using base::interfaces::ILoggingManager;

QString sanitizeFunction(const char* function)
{
    static const QRegExp parametersAndQualifiers(QStringLiteral("\\(.*\\).*"));
    static const QRegExp scope(QStringLiteral(".*::"));

    QString name = QString::fromUtf8(function);
    name.remove(parametersAndQualifiers);
    name.remove(scope);
    return name;
}

QString sanitizeSource(const char* file)
{
    QString path = QString::fromUtf8(file);
    // Without a '.' this is remove(-1, n), which Qt counts from the end: the last character goes.
    const int extension = path.lastIndexOf(QLatin1Char('.'));
    path.remove(extension, path.size() - extension);
    path.replace(QLatin1Char('\\'), QLatin1Char('.')).replace(QLatin1Char('/'), QLatin1Char('.'));

    QStringList parts = path.split(QLatin1Char('.'));
    const int src = parts.indexOf(QStringLiteral("src"));
    if (src >= 1) {
        parts = parts.mid(src + 1);
    }
    return parts.join(QLatin1Char('.'));
}

QString formatLogMessage(const QMessageLogContext& context, const QString& message)
{
    return QStringLiteral("%1(%2): %3")
        .arg(sanitizeFunction(context.function), QString::number(context.line), message);
}

namespace {

ILoggingManager::Loglevel levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return ILoggingManager::DEBUG;
    case QtWarningMsg:
        return ILoggingManager::WARN;
    case QtCriticalMsg:
        return ILoggingManager::ERROR;
    case QtFatalMsg:
        return ILoggingManager::FATAL;
    case QtInfoMsg:
        return ILoggingManager::INFO;
    }
    return ILoggingManager::ERROR;
}

} // namespace

void log4cxxMessageHandler(QtMsgType type, const QMessageLogContext& context,
                           const QString& message)
{
    const ILoggingManager::Loglevel level = levelOf(type);
    const QString name = sanitizeSource(context.file);
    base::business::LoggingManager* manager = base::business::LoggingManager::instance();
    // A fatal message whose level is off is dropped and, deliberately, does not end the process.
    if (!manager->isLoglevelSet(name, level)) {
        return;
    }
    manager->logEntry(level, name, formatLogMessage(context, message), true);
    if (level == ILoggingManager::FATAL) {
        manager->closeAppenders();
        std::abort();
    }
}

bool isMessageEnabled(QtMsgType type, const char* file)
{
    return QLoggingCategory::defaultCategory()->isEnabled(type)
        && base::business::LoggingManager::instance()->isEnabledFor(sanitizeSource(file),
                                                                    levelOf(type));
}

} // namespace logging
} // namespace corvane
