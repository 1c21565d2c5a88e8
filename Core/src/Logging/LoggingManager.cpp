#include "Logging/LoggingManager.h"

#include "Exceptions/Exceptions.h"
#include "Logging/LogMessageHandler.h"
#include "Utility/SystemEnvironment.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QMetaObject>
#include <QMutex>
#include <QMutexLocker>
#include <QRegularExpression>
#include <QThread>

#include <log4cplus/configurator.h>
#include <log4cplus/helpers/property.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace corvane {
namespace base {
namespace business {

using interfaces::ILoggingManager;

namespace {

// Every entry carries this location instead of the caller's: the caller is already named by
// the logger and, for Qt messages, by the text.
const char* const entryFile = "Core/src/Logging/LoggingManager.cpp";
constexpr int entryLine = 201;
const char* const entryFunction = "logEntry";

// log4cplus must be initialized before its first use and shut down after its last one. The
// initializer is created while the manager is constructed, so it outlives the manager.
void keepLog4cplusInitialized()
{
    static log4cplus::Initializer initializer;
}

// A root logger without a level (as an unrecognised level in the properties leaves it) makes
// log4cplus throw on every later entry; it gets log4cplus's default level back instead.
bool repairRootLogLevel()
{
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    if (root.getLogLevel() != log4cplus::NOT_SET_LOG_LEVEL) {
        return false;
    }
    root.setLogLevel(log4cplus::DEBUG_LOG_LEVEL);
    return true;
}

struct QStringHasher
{
    size_t operator()(const QString& text) const { return qHash(text); }
};

// log4cplus finds a logger by its name under the lock of its hierarchy, and a name always gives
// the same logger; so every thread keeps the loggers it has used (node-based, so references
// stay valid while names are added), and the last one for the common case of one caller
// writing several entries, where the very same string arrives again.
struct ThreadCache
{
    std::unordered_map<QString, log4cplus::Logger, QStringHasher> loggers;
    QString lastName;
    log4cplus::Logger* lastLogger = nullptr;
    std::string message;
};

// The cache is reached through plain data, which stays readable for the whole life of the
// thread: once the thread's own objects are destroyed (at its end, or for the main thread
// before static objects at exit) the cache is gone and entries are written without it. The
// library is linked by the application, so its thread data sits in the static block, the
// fastest to reach.
struct ThreadState
{
    ThreadCache* cache;
    bool gone;
};
thread_local ThreadState threadState __attribute__((tls_model("initial-exec"))) = {nullptr, false};

struct ThreadCacheOwner
{
    ~ThreadCacheOwner()
    {
        delete threadState.cache;
        threadState = {nullptr, true};
    }
};

Q_NEVER_INLINE ThreadCache* newThreadCache()
{
    thread_local ThreadCacheOwner owner;
    threadState.cache = new ThreadCache;
    return threadState.cache;
}

Q_ALWAYS_INLINE ThreadCache* threadCache()
{
    const ThreadState& state = threadState;
    if (Q_LIKELY(state.cache != nullptr) || state.gone) {
        return state.cache;
    }
    return newThreadCache();
}

Q_NEVER_INLINE log4cplus::Logger& lookUpLogger(ThreadCache& cache, const QString& name)
{
    auto found = cache.loggers.find(name);
    if (found == cache.loggers.end()) {
        found
            = cache.loggers.emplace(name, log4cplus::Logger::getInstance(name.toStdString())).first;
    }
    cache.lastName = name;
    cache.lastLogger = &found->second;
    return found->second;
}

Q_ALWAYS_INLINE log4cplus::Logger& cachedLogger(ThreadCache& cache, const QString& name)
{
    if (Q_LIKELY(cache.lastLogger != nullptr)
        && (cache.lastName.isSharedWith(name) || cache.lastName == name)) {
        return *cache.lastLogger;
    }
    return lookUpLogger(cache, name);
}

// Lets use work on the logger named name: the cached one, or, without the cache, one looked up.
template <class Use>
Q_ALWAYS_INLINE auto withLogger(const QString& name, Use use)
{
    if (ThreadCache* const cache = threadCache()) {
        return use(cachedLogger(*cache, name));
    }
    log4cplus::Logger logger = log4cplus::Logger::getInstance(name.toStdString());
    return use(logger);
}

// Copies UTF-16 code units to bytes; answers whether all of them were ASCII (else the bytes are
// not the text). A plain loop that compilers vectorise on every CPU.
template <typename Unit>
bool narrowAscii(const Unit* in, int size, char* out)
{
    unsigned seen = 0;
    for (int i = 0; i < size; ++i) {
        seen |= in[i];
        out[i] = char(in[i]);
    }
    return seen < 0x80;
}

// Writes line in decimal so that it ends at end; returns where it begins.
char* decimal(int line, char* end)
{
    unsigned value = line < 0 ? 0u - unsigned(line) : unsigned(line);
    do {
        *--end = char('0' + value % 10);
        value /= 10;
    } while (value != 0);
    if (line < 0) {
        *--end = '-';
    }
    return end;
}

// The text of an entry in UTF-8, in a buffer that keeps its size between entries: with a
// function, "function(line): message", the form of Qt's messages, else the message.
void entryText(const QString* function, int line, const QString& message, std::string& text)
{
    char digits[12];
    char* const digitsEnd = digits + sizeof digits;
    char* const digitsBegin = function != nullptr ? decimal(line, digitsEnd) : digitsEnd;
    const size_t digitCount = size_t(digitsEnd - digitsBegin);
    const size_t prefix = function != nullptr ? size_t(function->size()) + digitCount + 4 : 0;
    text.resize(prefix + size_t(message.size()));
    char* out = text.data();
    bool ascii = true;
    if (function != nullptr) {
        ascii = narrowAscii(function->utf16(), function->size(), out);
        out += function->size();
        *out++ = '(';
        out = std::copy(digitsBegin, digitsEnd, out);
        out = std::copy_n("): ", 3, out);
    }
    if (!narrowAscii(message.utf16(), message.size(), out) || !ascii) {
        text = function != nullptr
            ? (*function + QLatin1Char('(') + QLatin1String(digitsBegin, int(digitCount))
               + QLatin1String("): ") + message)
                  .toStdString()
            : message.toStdString();
    }
}

} // namespace

LoggingManager* LoggingManager::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static LoggingManager manager;
    return &manager;
}

LoggingManager::LoggingManager()
    : propertiesFile(QStringLiteral("log4cplus.properties")),
      levelMap({{FATAL, log4cplus::FATAL_LOG_LEVEL},
                {ERROR, log4cplus::ERROR_LOG_LEVEL},
                {WARN, log4cplus::WARN_LOG_LEVEL},
                {INFO, log4cplus::INFO_LOG_LEVEL},
                {DEBUG, log4cplus::DEBUG_LOG_LEVEL},
                {TRACE, log4cplus::TRACE_LOG_LEVEL}})
{
    for (int level = FATAL; level <= TRACE; ++level) {
        levelValues[size_t(level)] = levelMap.value(Loglevel(level), 0);
    }
    keepLog4cplusInitialized();
}

int LoggingManager::log4cplusLevel(Loglevel level) const
{
    return level >= FATAL && level <= TRACE ? levelValues[size_t(level)] : 0;
}

// Runs at process exit. Qt messages written after this (by other static objects) must not
// reach a manager that is gone, so Qt's own handler takes over again.
LoggingManager::~LoggingManager()
{
    const QtMessageHandler current = qInstallMessageHandler(nullptr);
    if (current != &logging::log4cxxMessageHandler) {
        qInstallMessageHandler(current);
    }
}

void LoggingManager::initialize()
{
    initialize(false);
}

void LoggingManager::reload()
{
    initialize(true);
}

// The properties logged are those of the file (with absolute paths), also when the logs are kept.
void LoggingManager::initialize(bool keepLogs)
{
    const QFileInfo executable(QCoreApplication::applicationFilePath());
    propertiesFile = executable.absolutePath() + QLatin1Char('/') + executable.baseName()
        + QStringLiteral(".properties");

    log4cplus::helpers::Properties properties(propertiesFile.toStdString(), 0);
    makeFilePathsInPropertiesAbsolute(properties);
    log4cplus::helpers::Properties applied = properties;
    if (keepLogs) {
        keepWrittenLogs(applied);
    }
    log4cplus::PropertyConfigurator configurator(applied, log4cplus::Logger::getDefaultHierarchy(),
                                                 0);
    configurator.configure();
    const bool rootLevelRepaired = repairRootLogLevel();

    qInfo("----------------start of log file----------------------------------");
    qDebug().noquote() << QStringLiteral("init LoggingManager with properties file: ")
            + propertiesFile;
    for (const std::string& name : properties.propertyNames()) {
        qDebug().noquote() << QStringLiteral("--> %1 = %2")
                                  .arg(QString::fromStdString(name),
                                       QString::fromStdString(properties.getProperty(name)));
    }
    if (rootLevelRepaired) {
        qWarning().noquote() << QStringLiteral("initialize: The root logger has no valid level in ")
                + propertiesFile + QStringLiteral("; using DEBUG.");
    }
}

void LoggingManager::deinitialize()
{
    qDebug("----------------end of log file----------------------------------");
}

void LoggingManager::getName(QString& name)
{
    name = QStringLiteral("LoggingManager");
}

void LoggingManager::getVersion(QString& version)
{
    version = QStringLiteral("1.0.0");
}

bool LoggingManager::isLoglevelSet(const QObject* sender, Loglevel level)
{
    return isLoglevelSet(loggerNameOf(sender), level);
}

// Compares with the logger's own level, not the inherited one: a logger without a level of its
// own answers true and leaves the filtering to log4cplus.
bool LoggingManager::isLoglevelSet(const QString& source, Loglevel level)
{
    return ownLevelAllows(source, level);
}

// The check of isLoglevelSet(), kept within the callers that check every entry.
Q_ALWAYS_INLINE bool LoggingManager::ownLevelAllows(const QString& source, Loglevel level)
{
    const int wanted = log4cplusLevel(level);
    return withLogger(
        source, [wanted](log4cplus::Logger& logger) { return logger.getLogLevel() <= wanted; });
}

bool LoggingManager::isEnabledFor(const QString& source, Loglevel level)
{
    const int wanted = log4cplusLevel(level);
    return withLogger(source,
                      [wanted](log4cplus::Logger& logger) { return logger.isEnabledFor(wanted); });
}

void LoggingManager::logException(const QObject* sender, const exceptions::BaseException& exception)
{
    logException(loggerNameOf(sender), exception);
}

void LoggingManager::logException(const QString& source, const exceptions::BaseException& exception)
{
    logEntry(ERROR, source,
             exception.getSource() + QStringLiteral("::") + exception.getMethod() + QLatin1Char(' ')
                 + exception.getReason(),
             true);
}

void LoggingManager::logEntry(Loglevel level, const QString& source, const QString& message,
                              bool checkLevel)
{
    if (checkLevel && !ownLevelAllows(source, level)) {
        return;
    }
    writeEntry(level, source, message);
}

void LoggingManager::logCheckedEntryAt(Loglevel level, const QString& source,
                                       const QString& function, int line, const QString& message)
{
    writeEntry(level, source, message, &function, line);
}

Q_NEVER_INLINE void LoggingManager::writeEntry(Loglevel level, const QString& source,
                                               const QString& message, const QString* function,
                                               int line)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> locker(mutex);
    ThreadCache* const cache = threadCache();
    std::string spareText;
    std::string& text = cache != nullptr ? cache->message : spareText;
    entryText(function, line, message, text);
    const int value = log4cplusLevel(level);
    withLogger(source, [&](log4cplus::Logger& logger) {
        logger.log(value, text, entryFile, entryLine, entryFunction);
    });
}

// A fatal message ends the process: what the appenders hold (an asynchronous appender's queue,
// a buffered file) is written and the files closed first.
void LoggingManager::closeAppenders()
{
    log4cplus::Logger::shutdown();
}

void LoggingManager::logEntry(Loglevel level, const QObject* sender, const QString& message,
                              bool checkLevel)
{
    logEntry(level, loggerNameOf(sender), message, checkLevel);
}

void LoggingManager::logFatal(const QString& source, const QString& message)
{
    logEntry(FATAL, source, message, true);
}

void LoggingManager::logFatal(const QObject* sender, const QString& message)
{
    logEntry(FATAL, sender, message, true);
}

void LoggingManager::logError(const QString& source, const QString& message)
{
    logEntry(ERROR, source, message, true);
}

void LoggingManager::logError(const QObject* sender, const QString& message)
{
    logEntry(ERROR, sender, message, true);
}

void LoggingManager::logWarn(const QString& source, const QString& message)
{
    logEntry(WARN, source, message, true);
}

void LoggingManager::logWarn(const QObject* sender, const QString& message)
{
    logEntry(WARN, sender, message, true);
}

void LoggingManager::logInfo(const QString& source, const QString& message)
{
    logEntry(INFO, source, message, true);
}

void LoggingManager::logInfo(const QObject* sender, const QString& message)
{
    logEntry(INFO, sender, message, true);
}

void LoggingManager::logDebug(const QString& source, const QString& message)
{
    logEntry(DEBUG, source, message, true);
}

void LoggingManager::logDebug(const QObject* sender, const QString& message)
{
    logEntry(DEBUG, sender, message, true);
}

void LoggingManager::logTrace(const QString& source, const QString& message)
{
    logEntry(TRACE, source, message, true);
}

void LoggingManager::logTrace(const QObject* sender, const QString& message)
{
    logEntry(TRACE, sender, message, true);
}

void LoggingManager::changeLoglevel(const QString& source, Loglevel level)
{
    const int value = log4cplusLevel(level);
    withLogger(source, [value](log4cplus::Logger& logger) { logger.setLogLevel(value); });
}

void LoggingManager::changeLoglevel(const QObject* sender, Loglevel level)
{
    changeLoglevel(loggerNameOf(sender), level);
}

QString LoggingManager::replaceEnvironmentVariablesByContent(const QString& path) const
{
    try {
        return QFileInfo(core::utility::SystemEnvironment::expandEnvironmentVariables(path))
            .absolutePath();
    } catch (const exceptions::InvalidArgumentException&) {
        return QString();
    }
}

// "${...}" paths stay as they are, log4cplus expands them itself; all others become absolute
// against the executable's folder. Either way the log file's folder is created.
void LoggingManager::makeFilePathsInPropertiesAbsolute(
    log4cplus::helpers::Properties& properties) const
{
    static const QRegularExpression fileProperty(QStringLiteral("^.*\\.File$"));
    const QDir applicationDirectory(QCoreApplication::applicationDirPath());

    for (const std::string& name : properties.propertyNames()) {
        if (!fileProperty.match(QString::fromStdString(name)).hasMatch()) {
            continue;
        }
        const QString value = QString::fromStdString(properties.getProperty(name));
        QString directory;
        if (value.startsWith(QLatin1String("${"))) {
            directory = replaceEnvironmentVariablesByContent(value);
        } else {
            const QFileInfo file(applicationDirectory, value);
            properties.setProperty(name, file.absoluteFilePath().toStdString());
            directory = file.absolutePath();
        }
        if (!directory.isEmpty()) {
            QDir().mkpath(directory);
        }
    }
}

// Configuring again opens every file appender anew; one that truncates would cut the log it
// is writing, so all of them append.
void LoggingManager::keepWrittenLogs(log4cplus::helpers::Properties& properties)
{
    static const QRegularExpression fileProperty(QStringLiteral("^(.*)\\.File$"));
    for (const std::string& name : properties.propertyNames()) {
        const QRegularExpressionMatch match = fileProperty.match(QString::fromStdString(name));
        if (match.hasMatch()) {
            properties.setProperty((match.captured(1) + QStringLiteral(".Append")).toStdString(),
                                   "true");
        }
    }
}

QString LoggingManager::loggerNameOf(const QObject* sender)
{
    if (sender == nullptr) {
        return QStringLiteral("unknown source");
    }
    return QString::fromUtf8(sender->metaObject()->className())
        .replace(QLatin1String("::"), QLatin1String("."));
}

} // namespace business
} // namespace base
} // namespace corvane
