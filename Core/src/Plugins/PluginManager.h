#pragma once

#include "Configuration/PluginConfiguration.h"
#include "Interfaces/IPluginManager.h"
#include "Plugins/DisabledPlugins.h"
#include "Plugins/PluginOrder.h"
#include "Plugins/StartUpRecord.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QSet>

#include <functional>
#include <memory>

class QPluginLoader;

namespace corvane {
namespace base {
namespace interfaces {
class IPlugin;
}
namespace business {

/**
 * Turns the plug-in list of the configuration into running plug-ins: loads each library,
 * hands each plug-in its configuration element, orders the plug-ins by the services they
 * provide and require, initializes those of the task "Base", and on request further tasks;
 * asks them before the application closes; deinitializes (in reverse start order) and unloads
 * them at the end. Of two libraries whose plug-ins have one name, the later one is used.
 *
 * The configuration names libraries "stem.dll" on every platform; on Linux the manager loads
 * "libstem.so" (or "stem.so") from the application's folder.
 */
class CORE_EXPORT PluginManager : public interfaces::IPluginManager
{
    Q_OBJECT
    Q_INTERFACES(corvane::base::interfaces::IManager corvane::base::interfaces::IPluginManager)

public:
    static PluginManager* instance();

    ~PluginManager() override;

    void initialize() override;
    /// Deinitializes and unloads every plug-in.
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;
    void initializePlugin(const QString& pluginName) override;
    void deinitializePlugin(const QString& pluginName) override;
    bool isLoaded(const QString& pluginName) override;
    bool isInitialized(const QString& pluginName) override;
    void getAvailablePlugins(QStringList& pluginNames) override;
    /// Asks every plug-in, also after one refused.
    bool checkIfApplicationCanClose() override;
    void getPluginInformation(const QString& pluginName, QString& description,
                              QString& version) override;
    void initializePluginsForTasks(const QStringList& tasks) override;
    void deinitializePluginsForTasks(const QStringList& tasks) override;

    // The phases of the start, called through the virtual table so that a subclass can
    // replace one.
    Q_INVOKABLE virtual void loadPlugins();
    Q_INVOKABLE virtual void loadPlugin(const QString& aPluginFileName);
    Q_INVOKABLE virtual void orderPlugins();
    Q_INVOKABLE virtual void initPlugins();

    void unloadPlugin(const QString& pluginName);
    void unloadPlugins();

    /// Whether every element of b is in a (true for an empty b).
    bool isSubListOf(const QStringList& a, const QStringList& b) const;
    /// Whether some element of b is in a (false for an empty b).
    bool isPartialSubListOf(const QStringList& a, const QStringList& b) const;

    /// The library file that "stem.dll" (or "libstem.so", "stem") names in folder.
    static QString libraryFile(const QString& folder, const QString& configuredName);

    /// The folder in which loadPlugin() looks for libraries; the application's folder unless
    /// set otherwise (an empty folder sets it back), so that a tool can load the plug-ins of
    /// another application.
    void setPluginFolder(const QString& folder);
    QString getPluginFolder() const;
    /// The plug-in entries that loadPlugins() loads and that configure the loaded plug-ins;
    /// the start (slotInitialize) takes them from the configuration manager instead.
    void setPluginConfigurations(const QList<entities::PluginConfiguration>& configurations);

    /// Why the last start (slotInitialize) failed; empty when it did not.
    QString startFailure() const;

    /// What the manager knows of a loaded plug-in, for tools and views.
    struct PluginDetails
    {
        QString name;
        QString version;
        QString description;
        QStringList tasks;
        QStringList providedServices;
        QStringList requiredServices;
        QStringList optionalRequiredServices;
        bool initialized = false;
        /// The ordering pass that placed it (from 1); 0 when it was not ordered.
        int pass = 0;
        qint64 loadMilliseconds = 0;
        qint64 initializeMilliseconds = 0; // its last initialize()
    };
    /// Throws the manager's exception ("Plugin not loaded: " + name) for an unknown name.
    PluginDetails getPluginDetails(const QString& pluginName);
    /// The plug-ins and services the last orderPlugins() went by, and what came of it, also
    /// when it failed.
    QList<PluginOrder::Plugin> getOrderingInput() const;
    PluginOrder::Result getOrdering() const;

    /// Decides, at a start, what to do about the plug-in that ended the last start; without
    /// one the start only warns. The runner sets it by the application's type.
    using LastStartPolicy = std::function<LastStartChoice(const StartUpRecord::Entry&)>;
    void setLastStartPolicy(LastStartPolicy policy);
    /// The name of the user's state folder of the application; the start takes it from the
    /// configuration, else the application's name.
    void setApplicationName(const QString& name);
    QString getApplicationName() const;
    /// The plug-ins (or libraries) that the last loadPlugins() left out, each with why.
    QList<QPair<QString, QString>> getDisabledPlugins() const;

signals:
    void signalInitialize();
    /// The start moves on: "Loading plug-ins", then "Starting plug-ins".
    void signalStartPhase(QString aPhase);

public slots:
    void slotInitialize();

protected:
    PluginManager();

private:
    Q_DISABLE_COPY(PluginManager)

    using LoadedPlugin = QPair<QString, QPluginLoader*>;

    interfaces::IPlugin* pluginOf(const char* method, const QString& name, QPluginLoader* loader);
    QPluginLoader* loaderOf(const QString& name) const;
    void initPlugin(QPluginLoader* aPluginLoader);
    void deinitPlugin(QPluginLoader* aPluginLoader);
    void configure(QPluginLoader* loader, interfaces::IPlugin* plugin);
    void setAside(const QString& name, const QString& aPluginFileName);
    void releaseSetAside(const QString& name);
    void logStartUpTimes() const;
    void beginStartRecord();
    void endStartRecord();
    bool leavesOut(const entities::PluginConfiguration& configuration);
    bool leavesOut(const QString& name, QPluginLoader* loader);
    void disableDependents();
    void recordPhase(const QString& plugin, const QString& library);
    /// Throws the manager's exception; the caller has logged the failure.
    [[noreturn]] void fail(const char* method, const QString& reason);

    QList<entities::PluginConfiguration> pluginConfigurations;
    QList<LoadedPlugin> plugins; // load order, after ordering start order
    QList<LoadedPlugin> setAsideLoaders; // gave their plug-in's name up to a later library
    QHash<QString, QString> loadedFiles; // file name as given -> plug-in name
    QHash<QString, QStringList> tasks;
    QStringList initializedPlugins;
    QHash<QString, qint64> loadTimes;       // milliseconds
    QHash<QString, qint64> initializeTimes; // milliseconds
    QList<PluginOrder::Plugin> orderingInput;
    PluginOrder::Result ordering;
    QString failedStart;
    QString pluginFolder; // empty: the application's folder
    QString applicationName;
    LastStartPolicy lastStartPolicy;
    std::unique_ptr<StartUpRecord> startRecord; // while a start loads and initializes
    QStringList leftOutThisStart;
    DisabledPlugins disabledPlugins;
};

} // namespace business
} // namespace base
} // namespace corvane
