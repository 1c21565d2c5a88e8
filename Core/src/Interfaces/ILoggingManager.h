#pragma once

#include "Interfaces/IManager.h"

namespace corvane {
namespace base {
namespace exceptions {
class BaseException;
}
namespace interfaces {

/**
 * Writes the framework's log. A source is a logger name as it stands; a sender is turned into
 * the logger named after its class. The bool of logEntry asks the manager to check the level
 * itself before writing.
 */
class CORE_EXPORT ILoggingManager : public IManager
{
    Q_OBJECT

public:
    enum Loglevel : int { FATAL = 0, ERROR = 1, WARN = 2, INFO = 3, DEBUG = 4, TRACE = 5 };
    Q_ENUM(Loglevel)

    explicit ILoggingManager(QObject* parent = nullptr) : IManager(parent) { }
    ~ILoggingManager() override = default;

    virtual bool isLoglevelSet(const QObject* sender, Loglevel level) = 0;
    virtual bool isLoglevelSet(const QString& source, Loglevel level) = 0;
    virtual void logException(const QObject* sender, const exceptions::BaseException& exception)
        = 0;
    virtual void logException(const QString& source, const exceptions::BaseException& exception)
        = 0;
    virtual void logEntry(Loglevel level, const QString& source, const QString& message,
                          bool checkLevel)
        = 0;
    virtual void logEntry(Loglevel level, const QObject* sender, const QString& message,
                          bool checkLevel)
        = 0;
    virtual void logFatal(const QString& source, const QString& message) = 0;
    virtual void logFatal(const QObject* sender, const QString& message) = 0;
    virtual void logError(const QString& source, const QString& message) = 0;
    virtual void logError(const QObject* sender, const QString& message) = 0;
    virtual void logWarn(const QString& source, const QString& message) = 0;
    virtual void logWarn(const QObject* sender, const QString& message) = 0;
    virtual void logInfo(const QString& source, const QString& message) = 0;
    virtual void logInfo(const QObject* sender, const QString& message) = 0;
    virtual void logDebug(const QString& source, const QString& message) = 0;
    virtual void logDebug(const QObject* sender, const QString& message) = 0;
    virtual void logTrace(const QString& source, const QString& message) = 0;
    virtual void logTrace(const QObject* sender, const QString& message) = 0;
    virtual void changeLoglevel(const QString& source, Loglevel level) = 0;
    virtual void changeLoglevel(const QObject* sender, Loglevel level) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::ILoggingManager, "de.corvane.LoggingManager/1.0")
