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
    /**
     * Severity of an entry, from the most to the least severe. A logger set to a level writes the
     * entries of that level and of every more severe one.
     */
    enum Loglevel : int { FATAL = 0, ERROR = 1, WARN = 2, INFO = 3, DEBUG = 4, TRACE = 5 };
    Q_ENUM(Loglevel)
    /** \var FATAL
     * The application cannot go on. */
    /** \var ERROR
     * An operation failed. */
    /** \var WARN
     * Something unexpected that the application copes with. */
    /** \var INFO
     * The course of the application: starts, stops, what was loaded. */
    /** \var DEBUG
     * Details for finding a fault. */
    /** \var TRACE
     * The finest details, such as every step of an operation. */

    /// Creates the manager as a child of parent.
    explicit ILoggingManager(QObject* parent = nullptr) : IManager(parent) { }
    ~ILoggingManager() override = default;

    /// isLoglevelSet() for the logger of sender's class.
    virtual bool isLoglevelSet(const QObject* sender, Loglevel level) = 0;
    /// Whether the own level of the logger named source lets entries of level through; true for a
    /// logger without a level of its own, which leaves the decision to log4cplus.
    virtual bool isLoglevelSet(const QString& source, Loglevel level) = 0;
    /// logException() to the logger of sender's class.
    virtual void logException(const QObject* sender, const exceptions::BaseException& exception)
        = 0;
    /// Writes "source::method reason" of the exception at ERROR level to the logger named
    /// source, if its own level lets ERROR through.
    virtual void logException(const QString& source, const exceptions::BaseException& exception)
        = 0;
    /**
     * Writes message at level to the logger named source. With checkLevel the entry is written
     * only when isLoglevelSet(source, level) answers true; without it log4cplus decides alone.
     */
    virtual void logEntry(Loglevel level, const QString& source, const QString& message,
                          bool checkLevel)
        = 0;
    /// Writes message at level to the logger of sender's class; checkLevel as for the by-name form.
    virtual void logEntry(Loglevel level, const QObject* sender, const QString& message,
                          bool checkLevel)
        = 0;
    /// Writes message at FATAL level to the logger named source.
    virtual void logFatal(const QString& source, const QString& message) = 0;
    /// Writes message at FATAL level to the logger of sender's class.
    virtual void logFatal(const QObject* sender, const QString& message) = 0;
    /// Writes message at ERROR level to the logger named source.
    virtual void logError(const QString& source, const QString& message) = 0;
    /// Writes message at ERROR level to the logger of sender's class.
    virtual void logError(const QObject* sender, const QString& message) = 0;
    /// Writes message at WARN level to the logger named source.
    virtual void logWarn(const QString& source, const QString& message) = 0;
    /// Writes message at WARN level to the logger of sender's class.
    virtual void logWarn(const QObject* sender, const QString& message) = 0;
    /// Writes message at INFO level to the logger named source.
    virtual void logInfo(const QString& source, const QString& message) = 0;
    /// Writes message at INFO level to the logger of sender's class.
    virtual void logInfo(const QObject* sender, const QString& message) = 0;
    /// Writes message at DEBUG level to the logger named source.
    virtual void logDebug(const QString& source, const QString& message) = 0;
    /// Writes message at DEBUG level to the logger of sender's class.
    virtual void logDebug(const QObject* sender, const QString& message) = 0;
    /// Writes message at TRACE level to the logger named source.
    virtual void logTrace(const QString& source, const QString& message) = 0;
    /// Writes message at TRACE level to the logger of sender's class.
    virtual void logTrace(const QObject* sender, const QString& message) = 0;
    /// Sets the level of the logger named source, at run time.
    virtual void changeLoglevel(const QString& source, Loglevel level) = 0;
    /// Sets the level of the logger of sender's class, at run time.
    virtual void changeLoglevel(const QObject* sender, Loglevel level) = 0;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::ILoggingManager, "de.corvane.LoggingManager/1.0")
