#include "Plugins/PluginManager.h"

#include "Configuration/ApplicationInformation.h"
#include "Exceptions/Exceptions.h"
#include "Interfaces/IConfigurationManager.h"
#include "Interfaces/IPlugin.h"
#include "Logging/LogMessageHandler.h"
#include "Plugins/PluginOrder.h"
#include "Plugins/StartUpTrace.h"
#include "StartUp/ManagerRegistry.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>
#include <QPluginLoader>

#include <algorithm>
#include <climits>
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

} // namespace

QString PluginManager::libraryStem(const QString& fileName)
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

namespace {

// The configured form, "stem.dll", of a loaded library file.
QString configuredFormOf(const QString& libraryFile)
{
    const QFileInfo file(libraryFile);
    return QDir(file.path())
        .filePath(PluginManager::libraryStem(libraryFile) + QStringLiteral(".dll"));
}

// The loader's reason for a library it could not load. Qt 5 finds no meta data in a plug-in
// built for Qt 6 and says no more; the Qt library that the file links to tells.
QString loadFailure(const QPluginLoader& loader, const QString& file)
{
    const int own = QT_VERSION_MAJOR;
    const int other = own == 5 ? 6 : 5;
    const QByteArray otherCore = "libQt" + QByteArray::number(other) + "Core.so";
    QFile library(file);
    const qint64 size = library.open(QIODevice::ReadOnly) ? library.size() : 0;
    const uchar* content = size > 0 ? library.map(0, size) : nullptr;
    if (content == nullptr
        || !QByteArray::fromRawData(reinterpret_cast<const char*>(content),
                                    int(qMin<qint64>(size, INT_MAX)))
                .contains(otherCore)) {
        return loader.errorString();
    }
    return loader.errorString()
        + QStringLiteral(" The plug-in was built for Qt %1; this application uses Qt %2.")
              .arg(other)
              .arg(own);
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
    for (const LoadedPlugin& plugin : qAsConst(setAsideLoaders)) {
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
    failedStart.clear();
    // However the start ends, short of a crash, its record goes with it.
    struct RecordEnd
    {
        PluginManager* manager;
        ~RecordEnd() { manager->endStartRecord(); }
    } recordEnd {this};
    try {
        ManagerRegistry::instance()->getConfigurationManager()->getPluginConfiguration(
            pluginConfigurations);
        beginStartRecord();
        emit signalStartPhase(QStringLiteral("Loading plug-ins"));
        qInfo("init: --- Starting to load Plugins ---");
        loadPlugins();
        qInfo("init: --- Done loading Plugins ---");
        qInfo("init: --- Starting to order Plugins ---");
        {
            StartUpTrace::Span span(QStringLiteral("order plug-ins"));
            orderPlugins();
        }
        qInfo("init: --- Done ordering Plugins ---");
        emit signalStartPhase(QStringLiteral("Starting plug-ins"));
        qInfo("init: --- Starting to initialize Plugins ---");
        initPlugins();
        qInfo("init: --- Done initializing Plugins ---");
    } catch (const exceptions::BaseException& e) {
        failedStart = QString::fromUtf8(e.what());
        qCritical().noquote() << "Error during initialize of plugin." << failedStart;
        // An application whose plug-ins did not start has nothing to do: it ends with 1 as
        // soon as its event loop runs, rather than idling forever.
        if (QCoreApplication::instance() != nullptr) {
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] { QCoreApplication::exit(1); },
                Qt::QueuedConnection);
        }
    }
    logStartUpTimes();
    const QString application = getApplicationName();
    StartUpTrace::instance()->finishWhenEventLoopRuns(
        [application](const QByteArray& trace) { StartUpRecord(application).storeTrace(trace); });
}

QString PluginManager::startFailure() const
{
    return failedStart;
}

PluginManager::PluginDetails PluginManager::getPluginDetails(const QString& pluginName)
{
    QPluginLoader* loader = loaderOf(pluginName);
    if (loader == nullptr) {
        fail("getPluginDetails", QStringLiteral("Plugin not loaded: ") + pluginName);
    }
    IPlugin* plugin = pluginOf("getPluginDetails", pluginName, loader);
    PluginDetails details;
    details.name = pluginName;
    plugin->getVersion(details.version);
    plugin->getDescription(details.description);
    plugin->getProvidedTasks(details.tasks);
    plugin->getProvidedServices(details.providedServices);
    plugin->getRequiredServices(details.requiredServices);
    plugin->getOptionalRequiredServices(details.optionalRequiredServices);
    details.initialized = isInitialized(pluginName);
    const int position = ordering.order.indexOf(pluginName);
    details.pass = position >= 0 ? ordering.passes.value(position) : 0;
    details.loadMilliseconds = loadTimes.value(pluginName);
    details.initializeMilliseconds = initializeTimes.value(pluginName);
    return details;
}

QList<PluginOrder::Plugin> PluginManager::getOrderingInput() const
{
    return orderingInput;
}

PluginOrder::Result PluginManager::getOrdering() const
{
    return ordering;
}

void PluginManager::loadPlugins()
{
    disabledPlugins.reset(DisabledPlugins::fromEnvironment(),
                          StartUpRecord(getApplicationName()).disabledPlugins(), leftOutThisStart);
    for (const entities::PluginConfiguration& configuration : qAsConst(pluginConfigurations)) {
        QCoreApplication::processEvents();
        QString library;
        configuration.getLibrary(library);
        if (!library.isEmpty() && !leavesOut(configuration)) {
            recordPhase(QString(), library);
            StartUpTrace::Span span(QStringLiteral("load"), library);
            loadPlugin(library);
            span.setPlugin(loadedFiles.value(library, library));
        }
    }
    if (!disabledPlugins.isEmpty()) {
        disableDependents();
    }
}

void PluginManager::loadPlugin(const QString& aPluginFileName)
{
    qDebug() << "loadPlugin:" << aPluginFileName;
    if (loadedFiles.contains(aPluginFileName) && isLoaded(loadedFiles.value(aPluginFileName))) {
        qCritical() << "loadPlugin: Plugin already loaded:" << aPluginFileName;
        fail("loadPlugin", QStringLiteral("Plugin already loaded: ") + aPluginFileName);
    }
    QElapsedTimer timer;
    timer.start();
    const QString file = libraryFile(getPluginFolder(), aPluginFileName);
    auto loader = std::make_unique<QPluginLoader>(file);
    QObject* instance = loader->instance();
    if (instance == nullptr) {
        // Qt's explanation does not always name the file; the log line does.
        qCritical() << "loadPlugin: Failed to load plugin:" << aPluginFileName << "from"
                    << QDir::toNativeSeparators(file);
        fail("loadPlugin",
             QStringLiteral("Failed to load plugin (%1). %2")
                 .arg(aPluginFileName, loadFailure(*loader, file)));
    }
    auto* plugin = qobject_cast<IPlugin*>(instance);
    if (plugin == nullptr) {
        loader->unload();
        qCritical() << "loadPlugin: Plugin not recognized:" << aPluginFileName;
        fail("loadPlugin", QStringLiteral("Plugin not recognized: ") + aPluginFileName);
    }

    const QString name = nameOf(plugin);
    if (leavesOut(name, loader.get())) {
        return;
    }
    if (isLoaded(name)) {
        try {
            setAside(name, aPluginFileName);
        } catch (const exceptions::BaseException&) {
            loader->unload();
            throw;
        }
    }
    QString version;
    plugin->getVersion(version);
    QStringList providedTasks;
    plugin->getProvidedTasks(providedTasks);
    for (const QString& task : qAsConst(providedTasks)) {
        tasks[task].append(name);
    }
    configure(loader.get(), plugin);

    qInfo().nospace() << "loadPlugin: Plugin loaded: " << name << " (" << version << ")";
    plugins.append({name, loader.release()});
    loadedFiles.insert(aPluginFileName, name);
    loadTimes.insert(name, timer.elapsed());
    emit signalPluginLoaded(name);
}

// Another library reports a name that is loaded: the plug-in loaded under it gives the name up.
// It is stopped if it runs (so that none of its services stays registered) and is not started
// again; its library stays loaded until the name is unloaded, since the new library may be the
// same file under another spelling and share its instance.
void PluginManager::setAside(const QString& name, const QString& aPluginFileName)
{
    QStringList earlierFiles = loadedFiles.keys(name);
    earlierFiles.sort();
    qWarning().nospace() << "loadPlugin: Plugin name already loaded: " << name << " from "
                         << earlierFiles.join(QStringLiteral(", ")) << "; " << aPluginFileName
                         << " replaces it";
    QPluginLoader* earlier = loaderOf(name);
    if (isInitialized(name)) {
        deinitPlugin(earlier);
    }
    for (auto task = tasks.begin(); task != tasks.end();) {
        task->removeAll(name);
        task = task->isEmpty() ? tasks.erase(task) : std::next(task);
    }
    initializeTimes.remove(name);
    plugins.erase(std::remove_if(plugins.begin(), plugins.end(),
                                 [&](const LoadedPlugin& p) { return p.first == name; }),
                  plugins.end());
    setAsideLoaders.append({name, earlier});
}

// Unloads the set-aside loaders of the name (of every name for a null one).
void PluginManager::releaseSetAside(const QString& name)
{
    for (auto loaded = setAsideLoaders.begin(); loaded != setAsideLoaders.end();) {
        if (!name.isNull() && loaded->first != name) {
            ++loaded;
            continue;
        }
        loaded->second->unload();
        logging::forgetMessagePlaces();
        delete loaded->second;
        loaded = setAsideLoaders.erase(loaded);
    }
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
            qCritical("orderPlugins: Plugin not loaded!");
            fail("orderPlugins", QStringLiteral("Plugin not loaded!"));
        }
        PluginOrder::Plugin record {loaded.first, {}, {}, {}};
        plugin->getProvidedServices(record.provided);
        plugin->getRequiredServices(record.required);
        plugin->getOptionalRequiredServices(record.optional);
        records.append(record);
    }

    orderingInput = records;
    ordering = PluginOrder::order(records, logging::isMessageEnabled(QtDebugMsg, __FILE__));
    const PluginOrder::Result& result = ordering;
    for (const auto& event : result.events) {
        const QString& name = event.second.first;
        switch (event.first) {
        case PluginOrder::Event::OptionalServiceDropped:
            qDebug() << "orderPlugins: OptionalRequiredService not available:"
                     << event.second.second << "for plugin" << name;
            break;
        case PluginOrder::Event::NotOrdered:
            qDebug() << "orderPlugins: Plugin NOT ordered:" << name;
            break;
        case PluginOrder::Event::Ordered:
            qInfo() << "orderPlugins: Plugin ordered:" << name;
            break;
        }
    }

    if (!result.leftOver.isEmpty()) {
        const QString names = result.leftOver.join(QStringLiteral(", "));
        qCritical() << "orderPlugins: Failed to order the following plugins:" << names;
        for (const QString& line : PluginOrder::explainLeftOver(records, result)) {
            qCritical().noquote() << QStringLiteral("orderPlugins: ") + line;
        }
        fail("orderPlugins", QStringLiteral("Failed to order the following plugins: ") + names);
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
            qInfo() << "initPlugins: Plugin init started:" << loaded.first;
            initPlugin(loaded.second);
        } else {
            qInfo() << "initPlugins: Plugin init NOT started:" << loaded.first;
        }
    }
    emit signalPluginInitializedForBase();
}

void PluginManager::initPlugin(QPluginLoader* aPluginLoader)
{
    if (aPluginLoader == nullptr) {
        qCritical("initPlugin: aPluginLoader is NULL");
        fail("initPlugin", QStringLiteral("aPluginLoader is NULL"));
    }
    auto* plugin = qobject_cast<IPlugin*>(aPluginLoader->instance());
    if (plugin == nullptr) {
        qCritical() << "initPlugin: Plugin not recognized:" << aPluginLoader->fileName();
        fail("initPlugin",
             QStringLiteral("Plugin not recognized (%1)").arg(aPluginLoader->fileName()));
    }
    const QString name = nameOf(plugin);
    if (initializedPlugins.contains(name)) {
        qInfo() << "initPlugin: Plugin already initialized:" << name;
        return;
    }
    recordPhase(name, loadedFiles.key(name));
    StartUpTrace::Span span(QStringLiteral("initialize"), name);
    QElapsedTimer timer;
    timer.start();
    try {
        plugin->initialize();
        initializeTimes.insert(name, timer.elapsed());
    } catch (const exceptions::BaseException& e) {
        qCritical() << "initPlugin: Failed to initialize plugin:" << name;
        fail("initPlugin",
             QStringLiteral("Failed to initialize plugin (%1): %2")
                 .arg(name, QString::fromUtf8(e.what())));
    }
    initializedPlugins.append(name);
    qInfo() << "initPlugin: Plugin initialized:" << name;
}

void PluginManager::deinitPlugin(QPluginLoader* aPluginLoader)
{
    if (aPluginLoader == nullptr) {
        qCritical("deinitPlugin: PluginLoader is NULL.");
        fail("deinitPlugin", QStringLiteral("PluginLoader is NULL."));
    }
    IPlugin* plugin = pluginOf("deinitPlugin", aPluginLoader->fileName(), aPluginLoader);
    const QString name = nameOf(plugin);
    plugin->deinitialize();
    initializedPlugins.removeAll(name);
    qInfo() << "deinitPlugin: Plugin" << name << "deinitialized.";
}

void PluginManager::initializePlugin(const QString& pluginName)
{
    qInfo() << "initializePlugin: Plugin init started:" << pluginName;
    if (isInitialized(pluginName)) {
        qCritical() << "initializePlugin: Plugin already initialized:" << pluginName;
        fail("initializePlugin", QStringLiteral("Plugin already initialized: ") + pluginName);
    }
    if (!isLoaded(pluginName)) {
        qCritical() << "initializePlugin: Plugin not initialized:" << pluginName;
        fail("initializePlugin", QStringLiteral("Plugin not initialized: ") + pluginName);
    }
    initPlugin(loaderOf(pluginName));
}

void PluginManager::deinitializePlugin(const QString& pluginName)
{
    qInfo() << "deinitializePlugin: Plugin deinit started:" << pluginName;
    if (!isInitialized(pluginName)) {
        qCritical() << "deinitializePlugin: Plugin already deinitialized:" << pluginName;
        fail("deinitializePlugin", QStringLiteral("Plugin already deinitialized: ") + pluginName);
    }
    if (!isLoaded(pluginName)) {
        qCritical() << "deinitializePlugin: Plugin not deinitialized:" << pluginName;
        fail("deinitializePlugin", QStringLiteral("Plugin not deinitialized: ") + pluginName);
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
        qDebug() << "checkIfApplicationCanClose: Ask Plugin:" << loaded.first;
        if (loaded.second == nullptr) {
            qCritical() << "checkIfApplicationCanClose: Not a pluginLoader for:" << loaded.first;
            fail("checkIfApplicationCanClose",
                 QStringLiteral("Not a pluginLoader for: ") + loaded.first);
        }
        if (pluginOf("checkIfApplicationCanClose", loaded.first, loaded.second)->checkCanClose()) {
            qDebug() << "checkIfApplicationCanClose: Plugin can close:" << loaded.first;
        } else {
            qDebug() << "checkIfApplicationCanClose: Plugin CANNOT close:" << loaded.first;
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
        qCritical() << "getPluginInformation: Plugin not loaded" << pluginName;
        fail("getPluginInformation", QStringLiteral("Plugin not loaded") + pluginName);
    }
    IPlugin* plugin = pluginOf("getPluginInformation", pluginName, loader);
    plugin->getVersion(version);
    plugin->getDescription(description);
    qDebug().nospace() << "getPluginInformation: Plugin " << pluginName << " (" << version
                       << ") = " << description;
}

void PluginManager::initializePluginsForTasks(const QStringList& taskList)
{
    qDebug() << "initializePluginsForTasks: TaskList:" << taskList.join(QStringLiteral(", "));
    QStringList names;
    for (const QString& task : taskList) {
        if (!tasks.contains(task)) {
            qCritical() << "initializePluginsForTasks: Loading unavailable task" << task;
        } else {
            names.append(tasks.value(task));
        }
    }
    for (const LoadedPlugin& loaded : qAsConst(plugins)) {
        if (names.contains(loaded.first)) {
            qInfo() << "initializePluginsForTasks: Plugin init started:" << loaded.first;
            initPlugin(loaded.second);
        } else {
            qInfo() << "initializePluginsForTasks: Plugin init NOT started:" << loaded.first;
        }
    }
    qDebug("initializePluginsForTasks: done.");
    emit signalPluginInitializedForTasks();
}

// A plug-in is stopped only when every task it offers is being stopped.
void PluginManager::deinitializePluginsForTasks(const QStringList& taskList)
{
    qDebug() << "deinitializePluginsForTasks: TaskList:" << taskList.join(QStringLiteral(", "));
    QStringList marked;
    for (const QString& task : taskList) {
        if (!tasks.contains(task)) {
            qCritical() << "deinitializePluginsForTasks: Unloading unavailable task" << task;
            continue;
        }
        for (const QString& name : tasks.value(task)) {
            QStringList offered;
            pluginOf("deinitializePluginsForTasks", name, loaderOf(name))
                ->getProvidedTasks(offered);
            const auto kept = std::find_if(offered.cbegin(), offered.cend(),
                                           [&](const QString& t) { return !taskList.contains(t); });
            if (kept != offered.cend()) {
                qDebug() << "deinitializePluginsForTasks: Marking plugin" << name
                         << "NOT for deinit because of task:" << *kept;
            } else {
                qDebug() << "deinitializePluginsForTasks: Marking plugin for deinit:" << name;
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
        qCritical() << "unloadPlugin: Plugin not loaded:" << pluginName;
        fail("unloadPlugin", QStringLiteral("Plugin not loaded: ") + pluginName);
    }
    releaseSetAside(pluginName);
    // A loader of a library that an earlier loader had loaded holds no reference of its own:
    // the library is gone with the earlier one, and its unload() says false.
    const bool unloaded = loader->unload() || !loader->isLoaded();
    logging::forgetMessagePlaces(); // its texts are gone, others may take their addresses
    if (!unloaded) {
        qCritical() << "unloadPlugin: Plugin unload failed:" << pluginName;
        fail("unloadPlugin", QStringLiteral("Plugin unload failed :") + pluginName);
    }
    const int removed
        = int(std::count_if(plugins.cbegin(), plugins.cend(),
                            [&](const LoadedPlugin& p) { return p.first == pluginName; }));
    plugins.erase(std::remove_if(plugins.begin(), plugins.end(),
                                 [&](const LoadedPlugin& p) { return p.first == pluginName; }),
                  plugins.end());
    for (const QString& file : loadedFiles.keys(pluginName)) {
        loadedFiles.remove(file);
    }
    delete loader;
    if (removed != 1) {
        qCritical() << "unloadPlugin: Removed more than one plugin during unload of" << pluginName;
        fail("unloadPlugin",
             QStringLiteral("Removed more than one plugin during unload of ") + pluginName);
    }
}

// Initialized plug-ins are stopped in reverse start order first, then every library is unloaded.
// A failure does not keep the others loaded; the first one is thrown at the end.
void PluginManager::unloadPlugins()
{
    QList<QPair<QString, QString>> failures; // plug-in, what went wrong
    for (auto loaded = plugins.crbegin(); loaded != plugins.crend(); ++loaded) {
        if (!initializedPlugins.contains(loaded->first)) {
            continue;
        }
        try {
            deinitPlugin(loaded->second);
        } catch (const exceptions::BaseException& e) {
            initializedPlugins.removeAll(loaded->first);
            failures.append({loaded->first, QString::fromUtf8(e.what())});
        }
    }
    const QList<LoadedPlugin> loadedPlugins = plugins;
    for (auto loaded = loadedPlugins.crbegin(); loaded != loadedPlugins.crend(); ++loaded) {
        try {
            unloadPlugin(loaded->first);
        } catch (const exceptions::BaseException& e) {
            failures.append({loaded->first, QString::fromUtf8(e.what())});
        }
    }
    releaseSetAside(QString());
    plugins.clear();
    loadedFiles.clear();
    tasks.clear();
    initializedPlugins.clear();
    for (const auto& failure : qAsConst(failures)) {
        qCritical().nospace() << "unloadPlugins: Plugin unload failed (" << failure.first
                              << "): " << failure.second;
    }
    if (!failures.isEmpty()) {
        fail("unloadPlugins",
             QStringLiteral("Plugin unload failed (%1): %2")
                 .arg(failures.first().first, failures.first().second));
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
    const QString stem = libraryStem(configuredName);
    const QDir directory(QDir::cleanPath(QDir(folder).filePath(configured.path())));
    for (const QString& candidate :
         {QStringLiteral("lib%1.so").arg(stem), stem + QStringLiteral(".so")}) {
        if (directory.exists(candidate)) {
            return directory.filePath(candidate);
        }
    }
    return directory.filePath(QStringLiteral("lib%1.so").arg(stem));
}

void PluginManager::setPluginFolder(const QString& folder)
{
    pluginFolder = folder;
}

QString PluginManager::getPluginFolder() const
{
    return pluginFolder.isEmpty() ? QCoreApplication::applicationDirPath() : pluginFolder;
}

void PluginManager::setPluginConfigurations(
    const QList<entities::PluginConfiguration>& configurations)
{
    pluginConfigurations = configurations;
}

IPlugin* PluginManager::pluginOf(const char* method, const QString& name, QPluginLoader* loader)
{
    QObject* instance = loader != nullptr ? loader->instance() : nullptr;
    if (instance == nullptr) {
        qCritical() << (QByteArray(method) + ": Not a plugin:").constData() << name;
        fail(method, QStringLiteral("Not a plugin: ") + name);
    }
    auto* plugin = qobject_cast<IPlugin*>(instance);
    if (plugin == nullptr) {
        qCritical() << (QByteArray(method) + ": Plugin not recognized:").constData() << name;
        fail(method, QStringLiteral("Plugin not recognized: ") + name);
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
        const qint64 load = loadTimes.value(loaded.first);
        const qint64 init = initializeTimes.value(loaded.first);
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

void PluginManager::setLastStartPolicy(LastStartPolicy policy)
{
    lastStartPolicy = std::move(policy);
}

void PluginManager::setApplicationName(const QString& name)
{
    applicationName = name;
}

QString PluginManager::getApplicationName() const
{
    return applicationName.isEmpty() ? QCoreApplication::applicationName() : applicationName;
}

QList<QPair<QString, QString>> PluginManager::getDisabledPlugins() const
{
    return disabledPlugins.list();
}

// Reports the plug-in that ended the last start, and lets the policy decide about it.
void PluginManager::beginStartRecord()
{
    entities::ApplicationInformation information;
    ManagerRegistry::instance()->getConfigurationManager()->getApplicationInformation(information);
    if (!information.getApplicationName().isEmpty()) {
        applicationName = information.getApplicationName();
    }
    startRecord = std::make_unique<StartUpRecord>(getApplicationName());
    leftOutThisStart.clear();
    const StartUpRecord::Entry last = startRecord->lastEndedStart();
    if (last.isNull()) {
        return;
    }
    qWarning().noquote() << QStringLiteral("The last start ended while plug-in %1 was %2")
                                .arg(last.name(), last.phase);
    startRecord->removeEndedStarts();
    const LastStartChoice choice
        = lastStartPolicy ? lastStartPolicy(last) : LastStartChoice::StartWithIt;
    if (choice == LastStartChoice::LeaveOutThisTime) {
        leftOutThisStart << last.name();
    } else if (choice == LastStartChoice::DisableUntilEnabled
               && !startRecord->disable(last.name())) {
        qWarning().noquote() << QStringLiteral("init: Cannot disable %1: %2")
                                    .arg(last.name(), startRecord->errorString());
        leftOutThisStart << last.name();
    }
}

void PluginManager::endStartRecord()
{
    if (startRecord) {
        startRecord->clear();
        startRecord.reset();
    }
}

// Written before the plug-in's code runs, so that it stays behind if that code ends the process.
void PluginManager::recordPhase(const QString& plugin, const QString& library)
{
    if (startRecord && !startRecord->recordInitializing(plugin, library)) {
        qWarning().noquote() << QStringLiteral("init: The start is not recorded: ")
                + startRecord->errorString();
        startRecord.reset();
    }
}

bool PluginManager::leavesOut(const entities::PluginConfiguration& configuration)
{
    const QString reason = disabledPlugins.reasonBeforeLoading(configuration);
    if (reason.isEmpty()) {
        return false;
    }
    QString library;
    configuration.getLibrary(library);
    qInfo().noquote()
        << QStringLiteral("loadPlugins: Plugin disabled: \"%1\" (%2)").arg(library, reason);
    disabledPlugins.add(library, reason, {}, false);
    return true;
}

bool PluginManager::leavesOut(const QString& name, QPluginLoader* loader)
{
    const QString reason = disabledPlugins.reasonAfterLoading(name);
    if (reason.isEmpty()) {
        return false;
    }
    QStringList provided;
    qobject_cast<IPlugin*>(loader->instance())->getProvidedServices(provided);
    qInfo().noquote()
        << QStringLiteral("loadPlugins: Plugin disabled: \"%1\" (%2)").arg(name, reason);
    disabledPlugins.add(name, reason, provided, true);
    loader->unload();
    return true;
}

// Plug-ins that require (not optionally) what only disabled plug-ins provide go with them, one
// at a time, until the rest can do without them.
void PluginManager::disableDependents()
{
    for (bool disabledOne = true; disabledOne;) {
        disabledOne = false;
        QStringList enabledServices;
        for (const LoadedPlugin& loaded : qAsConst(plugins)) {
            QStringList provided;
            pluginOf("loadPlugins", loaded.first, loaded.second)->getProvidedServices(provided);
            enabledServices << provided;
        }
        for (const LoadedPlugin& loaded : qAsConst(plugins)) {
            IPlugin* plugin = pluginOf("loadPlugins", loaded.first, loaded.second);
            QStringList required;
            plugin->getRequiredServices(required);
            const QString reason = disabledPlugins.reasonAsDependent(required, enabledServices);
            if (reason.isEmpty()) {
                continue;
            }
            const QString name = loaded.first;
            QStringList provided;
            plugin->getProvidedServices(provided);
            qInfo().noquote()
                << QStringLiteral("loadPlugins: Plugin disabled: \"%1\" (%2)").arg(name, reason);
            disabledPlugins.add(name, reason, provided, true);
            for (QStringList& names : tasks) {
                names.removeAll(name);
            }
            unloadPlugin(name);
            disabledOne = true;
            break;
        }
    }
}

void PluginManager::fail(const char* method, const QString& reason)
{
    throw PluginManagerException(this, QString::fromLatin1(method), reason);
}

} // namespace business
} // namespace base
} // namespace corvane
