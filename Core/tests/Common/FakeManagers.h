#pragma once

// Managers of the right interface types that do nothing; the text of a failure.

#include "Exceptions/BaseException.h"
#include "Interfaces/IConfigurationManager.h"
#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IPluginManager.h"

#include <QRegularExpression>

namespace fakes {

using namespace corvane::base::interfaces;
using namespace corvane::base::entities;
using corvane::base::exceptions::BaseException;

// The IManager part of every fake; getName counts how often it is asked.
template <typename Interface>
class Fake : public Interface
{
public:
    void initialize() override { }
    void deinitialize() override { }
    void getName(QString& name) override { name = QStringLiteral("Fake %1").arg(++nameRequests); }
    void getVersion(QString& version) override { version = QStringLiteral("1.0.0"); }
    int nameRequests = 0;
};

class ConfigurationManager : public Fake<IConfigurationManager>
{
public:
    void getPluginConfiguration(QList<PluginConfiguration>&) override { }
    void getApplicationInformation(ApplicationInformation&) override { }
    void checkConfigurationFileSignature() const override { }
};

class PluginManager : public Fake<IPluginManager>
{
public:
    void initializePlugin(const QString&) override { }
    void deinitializePlugin(const QString&) override { }
    bool isLoaded(const QString&) override { return false; }
    bool isInitialized(const QString&) override { return false; }
    void getAvailablePlugins(QStringList&) override { }
    bool checkIfApplicationCanClose() override { return true; }
    void getPluginInformation(const QString&, QString&, QString&) override { }
    void initializePluginsForTasks(const QStringList&) override { }
    void deinitializePluginsForTasks(const QStringList&) override { }
};

class ConfigurationAndPluginManager : public ConfigurationManager, public PluginManager
{
public:
    IManager& asManager() { return static_cast<ConfigurationManager&>(*this); }
};

class LoggingManager : public Fake<ILoggingManager>
{
public:
    bool isLoglevelSet(const QObject*, Loglevel) override { return true; }
    bool isLoglevelSet(const QString&, Loglevel) override { return true; }
    void logException(const QObject*, const BaseException&) override { }
    void logException(const QString&, const BaseException&) override { }
    void logEntry(Loglevel, const QString&, const QString&, bool) override { }
    void logEntry(Loglevel, const QObject*, const QString&, bool) override { }
    void logFatal(const QString&, const QString&) override { }
    void logFatal(const QObject*, const QString&) override { }
    void logError(const QString&, const QString&) override { }
    void logError(const QObject*, const QString&) override { }
    void logWarn(const QString&, const QString&) override { }
    void logWarn(const QObject*, const QString&) override { }
    void logInfo(const QString&, const QString&) override { }
    void logInfo(const QObject*, const QString&) override { }
    void logDebug(const QString&, const QString&) override { }
    void logDebug(const QObject*, const QString&) override { }
    void logTrace(const QString&, const QString&) override { }
    void logTrace(const QObject*, const QString&) override { }
    void changeLoglevel(const QString&, Loglevel) override { }
    void changeLoglevel(const QObject*, Loglevel) override { }
};

// Keeps the debug and error lines, as "DEBUG text" and "ERROR text".
class RecordingLoggingManager : public LoggingManager
{
public:
    void logError(const QObject*, const QString& text) override { entries << "ERROR " + text; }
    void logError(const QString&, const QString& text) override { entries << "ERROR " + text; }
    void logDebug(const QObject*, const QString& text) override { entries << "DEBUG " + text; }
    void logDebug(const QString&, const QString& text) override { entries << "DEBUG " + text; }
    QStringList errors() const { return entries.filter(QRegularExpression("^ERROR ")); }

    QStringList entries;
};

} // namespace fakes

// The what() of the framework exception that a call throws; "<no exception>" when none.
template <typename Call>
QString failureOf(Call call)
{
    try {
        call();
    } catch (const corvane::base::exceptions::BaseException& e) {
        return QString::fromUtf8(e.what()).remove(QStringLiteral("corvane::base::business::"));
    }
    return QStringLiteral("<no exception>");
}
