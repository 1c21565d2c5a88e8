#include "Logging/LogMessageHandler.h"

#include "Logging/LoggingManager.h"

#include <QLoggingCategory>
#include <QMutex>
#include <QRegularExpression>
#include <QStringList>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

namespace corvane {
namespace logging {

using base::interfaces::ILoggingManager;

QString sanitizeFunction(const char* function)
{
    // Greedy, and '.' takes line breaks too: from the first '(' to the end, and up to the last "::".
    static const QRegularExpression parametersAndQualifiers(
        QStringLiteral("\\(.*\\).*"), QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression scope(QStringLiteral(".*::"),
                                          QRegularExpression::DotMatchesEverythingOption);

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

// The logger name and function name of a place that writes messages, found once per place: Qt's
// message context points into the writing library's constant data, so the addresses of the
// file and function texts name the place. A library loaded after another was unloaded may
// reuse an address for other texts, so a remembered place counts only when its texts match
// too. Nothing here is ever freed: messages may come until the process ends.
struct Place
{
    QByteArray file;
    QByteArray function;
    QString logger;
    QString functionName;

    bool is(const char* otherFile, const char* otherFunction) const
    {
        return sameText(file, otherFile) && sameText(function, otherFunction);
    }

    static bool sameText(const QByteArray& known, const char* text)
    {
        return text == nullptr ? known.isNull() : std::strcmp(known.constData(), text) == 0;
    }
};

// Counts the libraries unloaded through forgetMessagePlaces().
QAtomicInt unloads;

// Each thread remembers the place of its last message in plain data, which no destructor takes
// away; as long as no library was unloaded since, its addresses still name the same texts.
struct LastPlace
{
    const char* file;
    const char* function;
    const Place* place;
    int unloads;
};
thread_local LastPlace lastPlace __attribute__((tls_model("initial-exec"))) = {};

Q_NEVER_INLINE const Place& findPlace(const char* file, const char* function)
{
    using Key = std::pair<const void*, const void*>;
    static QBasicMutex mutex;
    static auto* const places = new std::map<Key, std::unique_ptr<Place>>;
    const std::lock_guard<QBasicMutex> locker(mutex);
    std::unique_ptr<Place>& place = (*places)[Key {file, function}];
    if (!place || !place->is(file, function)) {
        place.reset(new Place {QByteArray(file), QByteArray(function), sanitizeSource(file),
                               sanitizeFunction(function)});
    }
    return *place;
}

const Place& placeOf(const char* file, const char* function)
{
    LastPlace& last = lastPlace;
    const int unloaded = unloads.loadRelaxed();
    if (last.place == nullptr || last.file != file || last.function != function
        || last.unloads != unloaded) {
        last = {file, function, &findPlace(file, function), unloaded};
    }
    return *last.place;
}

} // namespace

void log4cxxMessageHandler(QtMsgType type, const QMessageLogContext& context,
                           const QString& message)
{
    const ILoggingManager::Loglevel level = levelOf(type);
    const Place& place = placeOf(context.file, context.function);
    // Asked once: the handler is uninstalled when the manager goes at exit.
    static base::business::LoggingManager* const manager
        = base::business::LoggingManager::instance();
    // A fatal message whose level is off is dropped and, deliberately, does not end the process.
    if (!manager->isLoglevelSet(place.logger, level)) {
        return;
    }
    manager->logCheckedEntryAt(level, place.logger, place.functionName, context.line, message);
    if (level == ILoggingManager::FATAL) {
        manager->closeAppenders();
        std::abort();
    }
}

void forgetMessagePlaces()
{
    unloads.fetchAndAddRelaxed(1);
}

bool isMessageEnabled(QtMsgType type, const char* file)
{
    if (!QLoggingCategory::defaultCategory()->isEnabled(type)) {
        return false;
    }
    static base::business::LoggingManager* const manager
        = base::business::LoggingManager::instance();
    return manager->isEnabledFor(placeOf(file, nullptr).logger, levelOf(type));
}

} // namespace logging
} // namespace corvane
