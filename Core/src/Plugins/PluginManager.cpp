#include "Plugins/PluginManager.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/IConfigurationManager.h"
#include "Interfaces/IPlugin.h"
#include "Plugins/PluginOrder.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QPluginLoader>

#include <algorithm>
#include <memory>

namespace corvane {
namespace base {
namespace business {

using exceptions::PluginManagerException;
using interfaces::IPlugin;

namespace {

const QString baseTask = QStringLiteral("Base");

QString nameOf(IPlugin* plugin)
{
    QString name;
    plugin->getName(name);
    return name;
}

// "libstem.so", "stem.so", "stem.dll" and "stem" all have the stem "stem".
QString stemOf(const QString& fileName)
{
    QString stem = QFileInfo(fileName).fileName();
    for (const char* suffix : {".dll", ".so"}) {
        if (stem.endsWith(QLatin1String(suffix), Qt::CaseInsensitive)) {
            stem.chop(int(qstrlen(suffix)));
            if (qstrcmp(suffix, ".so") == 0 && stem.startsWith(QLatin1String("lib"))) {
                stem.remove(0, 3);
            }
            break;
        }
    }
    return stem;
}

// The configured form, "stem.dll", of a loaded library file.
QString configuredFormOf(const QString& libraryFile)
{
    const QFileInfo file(libraryFile);
    return QDir(file.path()).filePath(stemOf(libraryFile) + QStringLiteral(".dll"));
}

} // namespace

PluginManager* PluginManager::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static PluginManager manager;
    return &manager;
}

PluginManager::PluginManager()
{
    if (!connect(this, &PluginManager::signalInitialize, this, &PluginManager::slotInitialize)) {
        qCritical("Failed to connect initialize signal and slot");
    }
}

PluginManager::~PluginManager()
{
    for (const LoadedPlugin& plugin : qAsConst(plugins)) {
        delete plugin.second;
    }
}

void PluginManager::initialize()
{
    qInfo("initialize: called");
    emit signalInitialize();
    qInfo("initialize: done");
}

void PluginManager::deinitialize()
{
    qInfo("deinitialize: called");
    unloadPlugins();
    qInfo("deinitialize: done");
}

void PluginManager::getName(QString& name)
{
    name = QStringLiteral("PluginManager");
}

void PluginManager::getVersion(QString& version)
{
    version = QStringLiteral("1.0.0");
}

// A failing phase is reported and ends the start; the application goes on with what started.
void PluginManager::slotInitialize()
{
    qInfo("slotInitialize: called");
    try {
        ManagerRegistry::instance()->getConfigurationManager()->getPluginConfiguration(
            pluginConfigurations);
        qInfo("init: --- Starting to load Plugins ---");
        loadPlugins();
        qInfo("init: --- Done loading Plugins ---");
        qInfo("init: --- Starting to order Plugins ---");
        orderPlugins();
        qInfo("init: --- Done ordering Plugins ---");
        qInfo("init: --- Starting to initialize Plugins ---");
        initPlugins();
        qInfo("init: --- Done initializing Plugins ---");
    } catch (const exceptions::BaseException& e) {
        qCritical().noquote() << "Error during initialize of plugin." << e.what();
        // An application whose plug-ins did not start has nothing to do: it ends with 1 as
        // soon as its event loop runs, rather than idling forever.
        if (QCoreApplication::instance() != nullptr) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] { QCoreApplication::exit(1); },
                Qt::QueuedConnection);
        }
    }
    logStartUpTimes();
}

void PluginManager::loadPlugins()
{
    for (const entities::PluginConfiguration& configuration : qAsConst(pluginConfigurations)) {
        QCoreApplication::processEvents();
        QString library;
        configuration.getLibrary(library);
        if (!library.isEmpty()) {
            loadPlugin(library);
        }
    }
}

void PluginManager::loadPlugin(const QString& aPluginFileName)
{
    qDebug() << "loadPlugin:" << aPluginFileName;
    if (loadedFiles.contains(aPluginFileName)) {
        fail("loadPlugin", QStringLiteral("loadPlugin: Plugin already loaded: ") + aPluginFileName,
             QStringLiteral("Plugin already loaded: ") + aPluginFileName);
    }
    QElapsedTimer timer;
    timer.start();
    const QString file = libraryFile(QCoreApplication::applicationDirPath(), aPluginFileName);
    auto loader = std::make_unique<QPluginLoader>(file);
    QObject* instance = loader->instance();
    if (instance == nullptr) {
        // Qt's explanation does not always name the file; the log line does.
        fail("loadPlugin",
             QStringLiteral("loadPlugin: Failed to load plugin: %1 from %2")
                 .arg(aPluginFileName, QDir::toNativeSeparators(file)),
             QStringLiteral("Failed to load plugin (%1). %2")
                 .arg(aPluginFileName, loader->errorString()));
    }
    auto* plugin = qobject_cast<IPlugin*>(instance);
    if (plugin == nullptr) {
        loader->unload();
        fail("loadPlugin", QStringLiteral("loadPlugin: Plugin not recognized:") + aPluginFileName,
             QStringLiteral("Plugin not recognized: ") + aPluginFileName);
    }

    const QString name = nameOf(plugin);
    QString version;
    plugin->getVersion(version);
    QStringList providedTasks;
    plugin->getProvidedTasks(providedTasks);
    for (const QString& task : qAsConst(providedTasks)) {
        tasks[task].append(name);
    }
    configure(loader.get(), plugin);

    qInfo().noquote() << QStringLiteral("loadPlugin: Plugin loaded: %1 (%2)").arg(name, version);
    plugins.append({name, loader.release()});
    loadedFiles.insert(aPluginFileName);
    loadMilliseconds.insert(name, timer.elapsed());
    emit signalPluginLoaded(name);
}

// The first configuration whose library the loaded file is, compared in the configured form.
void PluginManager::configure(QPluginLoader* loader, IPlugin* plugin)
{
    const QString loaded = configuredFormOf(loader->fileName());
    for (const entities::PluginConfiguration& configuration : qAsConst(pluginConfigurations)) {
        QString library;
        configuration.getLibrary(library);
        if (!library.isEmpty() && loaded.endsWith(library, Qt::CaseInsensitive)) {
            QDomElement element;
            configuration.getConfiguration(element);
            plugin->setConfiguration(element);
            return;
        }
    }
}

void PluginManager::orderPlugins()
{
    QList<PluginOrder::Plugin> records;
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        auto* plugin = qobject_cast<IPlugin*>(loaded.second->instance());
        if (plugin == nullptr) {
            fail("orderPlugins", QStringLiteral("orderPlugins: Plugin not loaded!"),
                 QStringLiteral("Plugin not loaded!"));
        }
        PluginOrder::Plugin record {loaded.first, {}, {}, {}};
        plugin->getProvidedServices(record.provided);
        plugin->getRequiredServices(record.required);
        plugin->getOptionalRequiredServices(record.optional);
        records.append(record);
    }

    const PluginOrder::Result result = PluginOrder::order(records);
    for (const auto& event : result.events) {
        const QString& name = event.second.first;
        switch (event.first) {
        case PluginOrder::Event::OptionalServiceDropped:
            qDebug().noquote() << QStringLiteral(
                                      "orderPlugins: OptionalRequiredService not available:")
                    + event.second.second + QStringLiteral(" for plugin ") + name;
            break;
        case PluginOrder::Event::NotOrdered:
            qDebug().noquote() << QStringLiteral("orderPlugins: Plugin NOT ordered:") + name;
            break;
        case PluginOrder::Event::Ordered:
            qInfo().noquote() << QStringLiteral("orderPlugins: Plugin ordered:") + name;
            break;
        }
    }

    if (!result.leftOver.isEmpty()) {
        const QString names = result.leftOver.join(QStringLiteral(", "));
        qCritical().noquote() << QStringLiteral(
                                     "orderPlugins: Failed to order the following plugins:")
                + names;
        for (const QString& line : PluginOrder::explainLeftOver(records, result)) {
            qCritical().noquote() << QStringLiteral("orderPlugins: ") + line;
        }
        throw PluginManagerException(this, QStringLiteral("orderPlugins"),
                                     QStringLiteral("Failed to order the following plugins: ")
                                         + names);
    }

    QList<LoadedPlugin> ordered;
    for (const QString& name : result.order) {
        ordered.append({name, loaderOf(name)});
    }
    plugins = ordered;
}

void PluginManager::initPlugins()
{
    if (!tasks.contains(baseTask)) {
        qCritical("initPlugins: No base task.");
        return;
    }
    const QStringList& basePlugins = tasks[baseTask];
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        if (basePlugins.contains(loaded.first)) {
            qInfo().noquote() << QStringLiteral("initPlugins: Plugin init started:") + loaded.first;
            QElapsedTimer timer;
            timer.start();
            initPlugin(loaded.second);
            initializeMilliseconds.insert(loaded.first, timer.elapsed());
        } else {
            qInfo().noquote() << QStringLiteral("initPlugins: Plugin init NOT started:")
                    + loaded.first;
        }
    }
    emit signalPluginInitializedForBase();
}

void PluginManager::initPlugin(QPluginLoader* aPluginLoader)
{
    if (aPluginLoader == nullptr) {
        fail("initPlugin", QStringLiteral("initPlugin: aPluginLoader is NULL"),
             QStringLiteral("aPluginLoader is NULL"));
    }
    auto* plugin = qobject_cast<IPlugin*>(aPluginLoader->instance());
    if (plugin == nullptr) {
        fail("initPlugin",
             QStringLiteral("initPlugin: Plugin not recognized: ") + aPluginLoader->fileName(),
             QStringLiteral("Plugin not recognized (%1)").arg(aPluginLoader->fileName()));
    }
    const QString name = nameOf(plugin);
    if (initializedPlugins.contains(name)) {
        qInfo().noquote() << QStringLiteral("initPlugin: Plugin already initialized: ") + name;
        return;
    }
    try {
        plugin->initialize();
    } catch (const exceptions::BaseException& e) {
        fail("initPlugin", QStringLiteral("initPlugin: Failed to initialize plugin: ") + name,
             QStringLiteral("Failed to initialize plugin (%1): %2")
                 .arg(name, QString::fromUtf8(e.what())));
    }
    initializedPlugins.append(name);
    qInfo().noquote() << QStringLiteral("initPlugin: Plugin initialized:") + name;
}

void PluginManager::deinitPlugin(QPluginLoader* aPluginLoader)
{
    if (aPluginLoader == nullptr) {
        fail("deinitPlugin", QStringLiteral("deinitPlugin: PluginLoader is NULL."),
             QStringLiteral("PluginLoader is NULL."));
    }
    IPlugin* plugin = pluginOf("deinitPlugin", aPluginLoader->fileName(), aPluginLoader);
    const QString name = nameOf(plugin);
    plugin->deinitialize();
    initializedPlugins.removeAll(name);
    qInfo().noquote() << QStringLiteral("deinitPlugin: Plugin %1 deinitialized.").arg(name);
}

void PluginManager::initializePlugin(const QString& pluginName)
{
    qInfo().noquote() << QStringLiteral("initializePlugin: Plugin init started: ") + pluginName;
    if (isInitialized(pluginName)) {
        fail("initializePlugin",
             QStringLiteral("initializePlugin: Plugin already initialized: ") + pluginName,
             QStringLiteral("Plugin already initialized: ") + pluginName);
    }
    if (!isLoaded(pluginName)) {
        fail("initializePlugin",
             QStringLiteral("initializePlugin: Plugin not initialized: ") + pluginName,
             QStringLiteral("Plugin not initialized: ") + pluginName);
    }
    initPlugin(loaderOf(pluginName));
}

void PluginManager::deinitializePlugin(const QString& pluginName)
{
    qInfo().noquote() << QStringLiteral("deinitializePlugin: Plugin deinit started: ") + pluginName;
    if (!isInitialized(pluginName)) {
        fail("deinitializePlugin",
             QStringLiteral("deinitializePlugin: Plugin already deinitialized: ") + pluginName,
             QStringLiteral("Plugin already deinitialized: ") + pluginName);
    }
    if (!isLoaded(pluginName)) {
        fail("deinitializePlugin",
             QStringLiteral("deinitializePlugin: Plugin not deinitialized: ") + pluginName,
             QStringLiteral("Plugin not deinitialized: ") + pluginName);
    }
    deinitPlugin(loaderOf(pluginName));
}

bool PluginManager::isLoaded(const QString& pluginName)
{
    return loaderOf(pluginName) != nullptr;
}

bool PluginManager::isInitialized(const QString& pluginName)
{
    return initializedPlugins.contains(pluginName);
}

void PluginManager::getAvailablePlugins(QStringList& pluginNames)
{
    pluginNames.clear();
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        pluginNames.append(loaded.first);
    }
}

bool PluginManager::checkIfApplicationCanClose()
{
    bool canClose = true;
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        qDebug().noquote() << QStringLiteral("checkIfApplicationCanClose: Ask Plugin: ")
                + loaded.first;
        if (loaded.second == nullptr) {
            fail("checkIfApplicationCanClose",
                 QStringLiteral("checkIfApplicationCanClose: Not a pluginLoader for: ")
                     + loaded.first,
                 QStringLiteral("Not a pluginLoader for: ") + loaded.first);
        }
        if (pluginOf("checkIfApplicationCanClose", loaded.first, loaded.second)->checkCanClose()) {
            qDebug().noquote() << QStringLiteral("checkIfApplicationCanClose: Plugin can close: ")
                    + loaded.first;
        } else {
            qDebug().noquote() << QStringLiteral(
                                      "checkIfApplicationCanClose: Plugin CANNOT close: ")
                    + loaded.first;
            canClose = false;
        }
    }
    return canClose;
}

void PluginManager::getPluginInformation(const QString& pluginName, QString& description,
                                         QString& version)
{
    QPluginLoader* loader = loaderOf(pluginName);
    if (loader == nullptr) {
        fail("getPluginInformation",
             QStringLiteral("getPluginInformation: Plugin not loaded ") + pluginName,
             QStringLiteral("Plugin not loaded") + pluginName);
    }
    IPlugin* plugin = pluginOf("getPluginInformation", pluginName, loader);
    plugin->getVersion(version);
    plugin->getDescription(description);
    qDebug().noquote() << QStringLiteral("getPluginInformation: Plugin %1 (%2) = %3")
                              .arg(pluginName, version, description);
}

void PluginManager::initializePluginsForTasks(const QStringList& taskList)
{
    qDebug().noquote() << QStringLiteral("initializePluginsForTasks: TaskList: ")
            + taskList.join(QStringLiteral(", "));
    QStringList names;
    for (const QString& task : taskList) {
        if (!tasks.contains(task)) {
            qCritical().noquote() << QStringLiteral(
                                         "initializePluginsForTasks: Loading unavailable task ")
                    + task;
        } else {
            names.append(tasks.value(task));
        }
    }
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        if (names.contains(loaded.first)) {
            qInfo().noquote() << QStringLiteral("initializePluginsForTasks: Plugin init started: ")
                    + loaded.first;
            initPlugin(loaded.second);
        } else {
            qInfo().noquote() << QStringLiteral(
                                     "initializePluginsForTasks: Plugin init NOT started: ")
                    + loaded.first;
        }
    }
    qDebug("initializePluginsForTasks: done.");
    emit signalPluginInitializedForTasks();
}

// A plug-in is stopped only when every task it offers is being stopped.
void PluginManager::deinitializePluginsForTasks(const QStringList& taskList)
{
    qDebug().noquote() << QStringLiteral("deinitializePluginsForTasks: TaskList: ")
            + taskList.join(QStringLiteral(", "));
    QStringList marked;
    for (const QString& task : taskList) {
        if (!tasks.contains(task)) {
            qCritical().noquote() << QStringLiteral(
                                         "deinitializePluginsForTasks: Unloading unavailable task")
                    + task;
            continue;
        }
        for (const QString& name : tasks.value(task)) {
            QStringList offered;
            pluginOf("deinitializePluginsForTasks", name, loaderOf(name))
                ->getProvidedTasks(offered);
            const auto kept = std::find_if(offered.cbegin(), offered.cend(),
                                           [&](const QString& t) { return !taskList.contains(t); });
            if (kept != offered.cend()) {
                qDebug().noquote()
                    << QStringLiteral("deinitializePluginsForTasks: Marking plugin %1 NOT for "
                                      "deinit because of task: %2")
                           .arg(name, *kept);
            } else {
                qDebug().noquote()
                    << QStringLiteral("deinitializePluginsForTasks: Marking plugin for deinit: ")
                        + name;
                marked.append(name);
            }
        }
    }
    marked.removeDuplicates();
    for (const QString& name : qAsConst(marked)) {
        deinitializePlugin(name);
    }
    emit signalPluginDeinitializedForTasks();
    qDebug("deinitializePluginsForTasks: done.");
}

void PluginManager::unloadPlugin(const QString& pluginName)
{
    QPluginLoader* loader = loaderOf(pluginName);
    if (loader == nullptr) {
        fail("unloadPlugin", QStringLiteral("unloadPlugin: Plugin not loaded: ") + pluginName,
             QStringLiteral("Plugin not loaded: ") + pluginName);
    }
    if (!loader->unload()) {
        fail("unloadPlugin", QStringLiteral("unloadPlugin: Plugin unload failed:") + pluginName,
             QStringLiteral("Plugin unload failed :") + pluginName);
    }
    const int removed
        = int(std::count_if(plugins.cbegin(), plugins.cend(),
                            [&](const LoadedPlugin& p) { return p.first == pluginName; }));
    plugins.erase(std::remove_if(plugins.begin(), plugins.end(),
                                 [&](const LoadedPlugin& p) { return p.first == pluginName; }),
                  plugins.end());
    delete loader;
    if (removed != 1) {
        fail("unloadPlugin",
             QStringLiteral("unloadPlugin: Removed more than one plugin during unload of")
                 + pluginName,
             QStringLiteral("Removed more than one plugin during unload of ") + pluginName);
    }
}

// Initialized plug-ins are stopped in reverse start order first, then every library is unloaded.
// A failure does not keep the others loaded; the first one is thrown at the end.
void PluginManager::unloadPlugins()
{
    QStringList failures;
    for (auto loaded = plugins.crbegin(); loaded != plugins.crend(); ++loaded) {
        if (!initializedPlugins.contains(loaded->first)) {
            continue;
        }
        try {
            deinitPlugin(loaded->second);
        } catch (const exceptions::BaseException& e) {
            initializedPlugins.removeAll(loaded->first);
            failures << QStringLiteral("%1): %2").arg(loaded->first, QString::fromUtf8(e.what()));
        }
    }
    const QList<LoadedPlugin> loadedPlugins = plugins;
    for (auto loaded = loadedPlugins.crbegin(); loaded != loadedPlugins.crend(); ++loaded) {
        try {
            unloadPlugin(loaded->first);
        } catch (const exceptions::BaseException& e) {
            failures << QStringLiteral("%1): %2").arg(loaded->first, QString::fromUtf8(e.what()));
        }
    }
    plugins.clear();
    loadedFiles.clear();
    tasks.clear();
    initializedPlugins.clear();
    for (const QString& failure : qAsConst(failures)) {
        qCritical().noquote() << QStringLiteral("unloadPlugins: Plugin unload failed (") + failure;
    }
    if (!failures.isEmpty()) {
        throw PluginManagerException(this, QStringLiteral("unloadPlugins"),
                                     QStringLiteral("Plugin unload failed (") + failures.first());
    }
}

bool PluginManager::isSubListOf(const QStringList& a, const QStringList& b) const
{
    return std::all_of(b.cbegin(), b.cend(), [&](const QString& s) { return a.contains(s); });
}

bool PluginManager::isPartialSubListOf(const QStringList& a, const QStringList& b) const
{
    return std::any_of(b.cbegin(), b.cend(), [&](const QString& s) { return a.contains(s); });
}

QString PluginManager::libraryFile(const QString& folder, const QString& configuredName)
{
    const QFileInfo configured(configuredName);
    const QString stem = stemOf(configuredName);
    const QDir directory(QDir::cleanPath(QDir(folder).filePath(configured.path())));
    for (const QString& candidate :
         {QStringLiteral("lib%1.so").arg(stem), stem + QStringLiteral(".so")}) {
        if (directory.exists(candidate)) {
            return directory.filePath(candidate);
        }
    }
    return directory.filePath(QStringLiteral("lib%1.so").arg(stem));
}

IPlugin* PluginManager::pluginOf(const char* method, const QString& name, QPluginLoader* loader)
{
    const QString operation = QString::fromLatin1(method);
    QObject* instance = loader != nullptr ? loader->instance() : nullptr;
    if (instance == nullptr) {
        fail(method, operation + QStringLiteral(": Not a plugin: ") + name,
             QStringLiteral("Not a plugin: ") + name);
    }
    auto* plugin = qobject_cast<IPlugin*>(instance);
    if (plugin == nullptr) {
        fail(method, operation + QStringLiteral(": Plugin not recognized: ") + name,
             QStringLiteral("Plugin not recognized: ") + name);
    }
    return plugin;
}

QPluginLoader* PluginManager::loaderOf(const QString& name) const
{
    for (const LoadedPlugin& loaded : plugins) {
        if (loaded.first == name) {
            return loaded.second;
        }
    }
    return nullptr;
}

void PluginManager::logStartUpTimes() const
{
    qint64 total = 0;
    for (const LoadedPlugin& loaded : plugins) {
        const qint64 load = loadMilliseconds.value(loaded.first);
        const qint64 init = initializeMilliseconds.value(loaded.first);
        total += load + init;
        qDebug().noquote() << QStringLiteral(
                                  "init: Plugin %1 loaded in %2 ms, initialized in %3 ms")
                                  .arg(loaded.first)
                                  .arg(load)
                                  .arg(init);
    }
    qDebug().noquote()
        << QStringLiteral("init: Plugins loaded and initialized in %1 ms").arg(total);
}

void PluginManager::fail(const char* method, const QString& logged, const QString& reason)
{
    qCritical().noquote() << logged;
    throw PluginManagerException(this, QString::fromLatin1(method), reason);
}

} // namespace business
} // namespace base
} // namespace corvane
