#pragma once

#include "Interfaces/ILoggingManager.h"

#include <QHash>
#include <QString>

#include <array>

namespace log4cplus {
namespace helpers {
class Properties;
}
} // namespace log4cplus

namespace corvane {
namespace base {
namespace business {

/**
 * The framework's log, written through log4cplus. initialize() configures log4cplus from the
 * properties file beside the executable (its base name + ".properties"); relative ".File"
 * paths in it are taken relative to the executable's folder, and their folders are created.
 *
 * Logger names: a source is used as it stands; a sender gives its class name with "::"
 * replaced by ".", so log4cplus's dotted hierarchy applies to namespaces.
 */
class CORE_EXPORT LoggingManager final : public interfaces::ILoggingManager
{
    Q_OBJECT
    Q_INTERFACES(corvane::base::interfaces::IManager corvane::base::interfaces::ILoggingManager)

public:
    /// The process-wide manager, created on first call.
    static LoggingManager* instance();

    ~LoggingManager() override;

    /// Configures log4cplus from the properties file as it stands; again on every call.
    void initialize() override;
    /// initialize() for a running process: every file appender appends, whatever the file
    /// says, so that the log being written is never cut.
    void reload();
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;

    bool isLoglevelSet(const QObject* sender, Loglevel level) override;
    bool isLoglevelSet(const QString& source, Loglevel level) override;
    void logException(const QObject* sender, const exceptions::BaseException& exception) override;
    void logException(const QString& source, const exceptions::BaseException& exception) override;
    void logEntry(Loglevel level, const QString& source, const QString& message,
                  bool checkLevel) override;
    void logEntry(Loglevel level, const QObject* sender, const QString& message,
                  bool checkLevel) override;
    void logFatal(const QString& source, const QString& message) override;
    void logFatal(const QObject* sender, const QString& message) override;
    void logError(const QString& source, const QString& message) override;
    void logError(const QObject* sender, const QString& message) override;
    void logWarn(const QString& source, const QString& message) override;
    void logWarn(const QObject* sender, const QString& message) override;
    void logInfo(const QString& source, const QString& message) override;
    void logInfo(const QObject* sender, const QString& message) override;
    void logDebug(const QString& source, const QString& message) override;
    void logDebug(const QObject* sender, const QString& message) override;
    void logTrace(const QString& source, const QString& message) override;
    void logTrace(const QObject* sender, const QString& message) override;
    void changeLoglevel(const QString& source, Loglevel level) override;
    void changeLoglevel(const QObject* sender, Loglevel level) override;

    /// Whether log4cplus would write an entry of this level to the logger named source, with
    /// the level it inherits (isLoglevelSet() looks at the logger's own level only).
    bool isEnabledFor(const QString& source, Loglevel level);
    /// logEntry(level, source, "function(line): message", true) for the handler of Qt's
    /// messages, which has already found isLoglevelSet(source, level) true: the text is put
    /// together where it is written.
    void logCheckedEntryAt(Loglevel level, const QString& source, const QString& function, int line,
                           const QString& message);
    /// Writes out and closes every appender, for a process that is about to abort.
    void closeAppenders();

private:
    LoggingManager();
    Q_DISABLE_COPY(LoggingManager)

    /// The directory of a ${NAME} file path after expansion; empty when a variable is unset.
    QString replaceEnvironmentVariablesByContent(const QString& path) const;
    void makeFilePathsInPropertiesAbsolute(log4cplus::helpers::Properties& properties) const;
    void initialize(bool keepLogs);
    static void keepWrittenLogs(log4cplus::helpers::Properties& properties);

    bool ownLevelAllows(const QString& source, Loglevel level);
    /// The write of logEntry(), apart from its level check, which is kept small; with a
    /// function, "function(line): " comes before the message.
    void writeEntry(Loglevel level, const QString& source, const QString& message,
                    const QString* function = nullptr, int line = 0);
    static QString loggerNameOf(const QObject* sender);
    /// levelMap's value of level, 0 for a level outside it, without a look-up.
    int log4cplusLevel(Loglevel level) const;

    QString propertiesFile;
    QHash<Loglevel, int> levelMap;
    std::array<int, 6> levelValues {}; // levelMap by level, for the paths of every entry
};

} // namespace business
} // namespace base
} // namespace corvane
