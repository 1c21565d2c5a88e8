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
    explicit IPluginManager(QObject* parent = nullptr) : IManager(parent) { }
    ~IPluginManager() override = default;

    virtual void initializePlugin(const QString& pluginName) = 0;
    virtual void deinitializePlugin(const QString& pluginName) = 0;
    virtual bool isLoaded(const QString& pluginName) = 0;
    virtual bool isInitialized(const QString& pluginName) = 0;
    virtual void getAvailablePlugins(QStringList& pluginNames) = 0;
    virtual bool checkIfApplicationCanClose() = 0;
    virtual void getPluginInformation(const QString& pluginName, QString& description,
                                      QString& version)
        = 0;
    virtual void initializePluginsForTasks(const QStringList& tasks) = 0;
    virtual void deinitializePluginsForTasks(const QStringList& tasks) = 0;

signals:
    void signalPluginLoaded(QString aPluginName);
    void signalPluginInitializedForTasks();
    void signalPluginDeinitializedForTasks();
    void signalPluginInitializedForBase();
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IPluginManager,
                    "de.corvane.plugin.IPluginManager/1.0")
