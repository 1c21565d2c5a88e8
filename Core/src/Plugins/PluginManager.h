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
    /// The process-wide manager, created on first call.
    static PluginManager* instance();

    ~PluginManager() override;

    /// Starts the plug-ins (slotInitialize()): loads, orders and initializes those of "Base". A
    /// failure is logged and kept (startFailure()), and ends the event loop with 1.
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
    /// Loads the library of every plug-in entry, in order; entries without a library are skipped.
    Q_INVOKABLE virtual void loadPlugins();
    /// Loads the library that aPluginFileName names in the plug-in folder and hands the plug-in
    /// its configuration element; throws when the library is loaded already, cannot be loaded or
    /// holds no IPlugin.
    Q_INVOKABLE virtual void loadPlugin(const QString& aPluginFileName);
    /// Puts the loaded plug-ins into start order (see PluginOrder); throws when some cannot be ordered.
    Q_INVOKABLE virtual void orderPlugins();
    /// Initializes, in start order, the plug-ins that offer the task "Base".
    Q_INVOKABLE virtual void initPlugins();

    /// Unloads the library of the plug-in of that name; throws when it is not loaded or stays loaded.
    void unloadPlugin(const QString& pluginName);
    /// Deinitializes the started plug-ins in reverse start order and unloads every library; throws
    /// after the walk when one of them failed.
    void unloadPlugins();

    /// Whether every element of b is in a (true for an empty b).
    bool isSubListOf(const QStringList& a, const QStringList& b) const;
    /// Whether some element of b is in a (false for an empty b).
    bool isPartialSubListOf(const QStringList& a, const QStringList& b) const;

    /// The library file that "stem.dll" (or "libstem.so", "stem") names in folder.
    static QString libraryFile(const QString& folder, const QString& configuredName);
    /// The stem of a library's name: "stem" for "libstem.so", "stem.so", "stem.dll" and "stem".
    static QString libraryStem(const QString& fileName);

    /// The folder in which loadPlugin() looks for libraries; the application's folder unless
    /// set otherwise (an empty folder sets it back), so that a tool can load the plug-ins of
    /// another application.
    void setPluginFolder(const QString& folder);
    /// The folder in which loadPlugin() looks for libraries.
    QString getPluginFolder() const;
    /// The plug-in entries that loadPlugins() loads and that configure the loaded plug-ins;
    /// the start (slotInitialize) takes them from the configuration manager instead.
    void setPluginConfigurations(const QList<entities::PluginConfiguration>& configurations);

    /// Why the last start (slotInitialize) failed; empty when it did not.
    QString startFailure() const;

    /// What the manager knows of a loaded plug-in, for tools and views.
    struct PluginDetails
    {
        /// The plug-in's name (IPlugin::getName()).
        QString name;
        /// The plug-in's version text.
        QString version;
        /// The plug-in's description.
        QString description;
        /// The tasks the plug-in offers.
        QStringList tasks;
        /// The services the plug-in provides.
        QStringList providedServices;
        /// The services the plug-in requires.
        QStringList requiredServices;
        /// The services the plug-in uses when some plug-in provides them.
        QStringList optionalRequiredServices;
        /// Whether the plug-in is initialized.
        bool initialized = false;
        /// The ordering pass that placed it (from 1); 0 when it was not ordered.
        int pass = 0;
        /// How long loading its library took, in milliseconds.
        qint64 loadMilliseconds = 0;
        /// How long its last initialize() took, in milliseconds.
        qint64 initializeMilliseconds = 0; // its last initialize()
    };
    /// Throws the manager's exception ("Plugin not loaded: " + name) for an unknown name.
    PluginDetails getPluginDetails(const QString& pluginName);
    /// The plug-ins and services the last orderPlugins() went by, and what came of it, also
    /// when it failed.
    QList<PluginOrder::Plugin> getOrderingInput() const;
    /// The result of the last orderPlugins().
    PluginOrder::Result getOrdering() const;

    /// Decides, at a start, what to do about the plug-in that ended the last start; without
    /// one the start only warns. The runner sets it by the application's type.
    using LastStartPolicy = std::function<LastStartChoice(const StartUpRecord::Entry&)>;
    /// Sets what the start does about the plug-in that ended the last start.
    void setLastStartPolicy(LastStartPolicy policy);
    /// The name of the user's state folder of the application; the start takes it from the
    /// configuration, else the application's name.
    void setApplicationName(const QString& name);
    /// The name of the user's state folder of the application: the one set, else the
    /// application's name.
    QString getApplicationName() const;
    /// The plug-ins (or libraries) that the last loadPlugins() left out, each with why.
    QList<QPair<QString, QString>> getDisabledPlugins() const;

signals:
    /// Emitted by initialize() to run slotInitialize().
    void signalInitialize();
    /// The start moves on: "Loading plug-ins", then "Starting plug-ins".
    void signalStartPhase(QString aPhase);

public slots:
    /// The start: takes the plug-in entries from the configuration manager, then loadPlugins(),
    /// orderPlugins() and initPlugins(); a failure is logged and kept (startFailure()).
    void slotInitialize();

protected:
    /// For subclasses; the process-wide manager comes from instance().
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
