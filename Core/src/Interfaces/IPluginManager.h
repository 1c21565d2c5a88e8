#pragma once

#include "Interfaces/IManager.h"

#include <QStringList>

namespace corvane {
namespace base {
namespace interfaces {

/// Loads, orders, starts and stops the application's plug-ins.
class CORE_EXPORT IPluginManager : public IManager
{
    Q_OBJECT

public:
    /// Creates the manager as a child of parent.
    explicit IPluginManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IPluginManager() override = default;

    /// Starts the loaded plug-in of that name; throws when it is not loaded or already started.
    virtual void initializePlugin(const QString& pluginName) = 0;
    /// Stops the plug-in of that name; throws when it is not loaded or not started.
    virtual void deinitializePlugin(const QString& pluginName) = 0;
    /// Whether a plug-in of that name is loaded.
    virtual bool isLoaded(const QString& pluginName) = 0;
    /// Whether the plug-in of that name has been started and not stopped again.
    virtual bool isInitialized(const QString& pluginName) = 0;
    /// Replaces the content of pluginNames with the names of the loaded plug-ins, in start
    /// order once they are ordered.
    virtual void getAvailablePlugins(QStringList& pluginNames) = 0;
    /// Asks every plug-in whether the application may close; true only when all agree.
    virtual bool checkIfApplicationCanClose() = 0;
    /// Writes the description and the version of the loaded plug-in of that name.
    virtual void getPluginInformation(const QString& pluginName, QString& description,
                                      QString& version)
        = 0;
    /// Starts, in start order, the plug-ins that offer one of the tasks.
    virtual void initializePluginsForTasks(const QStringList& tasks) = 0;
    /// Stops the plug-ins that offer one of the tasks and no task that keeps running.
    virtual void deinitializePluginsForTasks(const QStringList& tasks) = 0;

signals:
    /// A plug-in library was loaded; aPluginName is the plug-in's name.
    void signalPluginLoaded(QString aPluginName);
    /// initializePluginsForTasks() has started the plug-ins of its tasks.
    void signalPluginInitializedForTasks();
    /// deinitializePluginsForTasks() has stopped the plug-ins of its tasks.
    void signalPluginDeinitializedForTasks();
    /// The plug-ins of the task "Base" have been started at the application's start.
    void signalPluginInitializedForBase();
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IPluginManager,
                    "de.corvane.plugin.IPluginManager/1.0")
