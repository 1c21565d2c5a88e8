#pragma once

// Minimal managers for tests that only need objects of the right interface types.

#include "Interfaces/IConfigurationManager.h"
#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IPluginManager.h"
#include "Interfaces/IServiceManager.h"
#include "Interfaces/IStartUpManager.h"

#include <QRegularExpression>

namespace fakes {

using namespace corvane::base::interfaces;
using corvane::base::entities::ApplicationInformation;
using corvane::base::entities::PluginConfiguration;
using corvane::base::exceptions::BaseException;

// The IManager part every fake shares; getName counts how often it was asked.
#define FAKE_MANAGER_BODY(Name)                                                                    \
    void initialize() override { }                                                                 \
    void deinitialize() override { }                                                               \
    void getName(QString& name) override                                                           \
    {                                                                                              \
        ++nameRequests;                                                                            \
        name = QStringLiteral(Name);                                                               \
    }                                                                                              \
    void getVersion(QString& version) override                                                     \
    {                                                                                              \
        version = QStringLiteral("1.0.0");                                                         \
    }                                                                                              \
    int nameRequests = 0;

class PlainManager : public IManager
{
public:
    FAKE_MANAGER_BODY("PlainManager")
};

class ConfigurationManager : public IConfigurationManager
{
public:
    FAKE_MANAGER_BODY("ConfigurationManager")
    void getPluginConfiguration(QList<PluginConfiguration>&) override { }
    void getApplicationInformation(ApplicationInformation&) override { }
    void checkConfigurationFileSignature() const override { }
};

class StartUpManager : public IStartUpManager
{
public:
    FAKE_MANAGER_BODY("StartUpManager")
    void initManagers() override { }
};

class ServiceManager : public IServiceManager
{
public:
    FAKE_MANAGER_BODY("ServiceManager")
    void registerService(IService&) override { }
    void unregisterService(QString&) override { }
    IService* getService(const QString&) override { return nullptr; }
    void getServicesByInterface(const QString&, QStringList&) override { }
    void getAvailableServices(QStringList&) override { }
    bool isServiceAvailable(const QString&) override { return false; }
};

class PluginManager : public IPluginManager
{
public:
    FAKE_MANAGER_BODY("PluginManager")
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

class LoggingManager : public ILoggingManager
{
public:
    FAKE_MANAGER_BODY("LoggingManager")
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

#undef FAKE_MANAGER_BODY

} // namespace fakes

namespace fakes {

// One object that is both a configuration and a plug-in manager (two QObject bases, so it is
// handed to the registry through one of its IManager parts).
class ConfigurationAndPluginManager : public ConfigurationManager, public PluginManager
{
public:
    IManager& asManager() { return static_cast<ConfigurationManager&>(*this); }
};

} // namespace fakes

namespace fakes {

// Keeps the debug and error lines written by sender, as "DEBUG text" and "ERROR text".
class RecordingLoggingManager : public LoggingManager
{
public:
    void logError(const QObject*, const QString& message) override
    {
        entries << "ERROR " + message;
    }
    void logError(const QString&, const QString& message) override
    {
        entries << "ERROR " + message;
    }
    void logDebug(const QObject*, const QString& message) override
    {
        entries << "DEBUG " + message;
    }
    void logDebug(const QString&, const QString& message) override
    {
        entries << "DEBUG " + message;
    }

    QStringList errors() const { return entries.filter(QRegularExpression("^ERROR ")); }

    QStringList entries;
};

} // namespace fakes
