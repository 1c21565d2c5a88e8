#include "Plugins/DisabledPlugins.h"

#include "Plugins/PluginManager.h"

#include <QFileInfo>

namespace corvane {
namespace base {
namespace business {

namespace {

bool names(const QStringList& list, const QString& name, bool isLibrary)
{
    for (const QString& entry : list) {
        if (isLibrary ? PluginManager::libraryStem(entry).compare(PluginManager::libraryStem(name),
                                                                  Qt::CaseInsensitive)
                    == 0
                      : entry == name) {
            return true;
        }
    }
    return false;
}

} // namespace

QStringList DisabledPlugins::fromEnvironment()
{
    QStringList result;
    const QString value = QString::fromLocal8Bit(qgetenv("CORVANE_DISABLE_PLUGINS"));
    for (const QString& name : value.split(QLatin1Char(','))) {
        if (!name.trimmed().isEmpty()) {
            result << name.trimmed();
        }
    }
    return result;
}

void DisabledPlugins::reset(const QStringList& byEnvironment, const QStringList& untilEnabled,
                            const QStringList& thisStartOnly)
{
    this->byEnvironment = byEnvironment;
    this->untilEnabled = untilEnabled;
    this->thisStartOnly = thisStartOnly;
    disabled.clear();
    providers.clear();
    someServicesUnknown = false;
}

QString DisabledPlugins::reasonFor(const QString& name, bool isLibrary) const
{
    if (names(byEnvironment, name, isLibrary)) {
        return QStringLiteral("disabled by CORVANE_DISABLE_PLUGINS");
    }
    if (names(thisStartOnly, name, isLibrary)) {
        return QStringLiteral("left out of this start");
    }
    if (names(untilEnabled, name, isLibrary)) {
        return QStringLiteral("disabled until it is enabled again");
    }
    return QString();
}

QString
DisabledPlugins::reasonBeforeLoading(const entities::PluginConfiguration& configuration) const
{
    if (!configuration.isEnabled()) {
        return QStringLiteral("disabled by the configuration");
    }
    QString library;
    configuration.getLibrary(library);
    return reasonFor(library, true);
}

QString DisabledPlugins::reasonAfterLoading(const QString& plugin) const
{
    return reasonFor(plugin, false);
}

void DisabledPlugins::add(const QString& name, const QString& reason,
                          const QStringList& providedServices, bool servicesKnown)
{
    disabled.append({name, reason});
    for (const QString& service : providedServices) {
        providers.insert(service, name);
    }
    someServicesUnknown = someServicesUnknown || !servicesKnown;
}

// A missing service counts when a disabled plug-in provides it, or when a library left out
// unloaded might have; otherwise it was missing anyway, and the ordering reports it.
QString DisabledPlugins::reasonAsDependent(const QStringList& requiredServices,
                                           const QStringList& enabledServices) const
{
    for (const QString& service : requiredServices) {
        if (enabledServices.contains(service)) {
            continue;
        }
        if (providers.contains(service)) {
            return QStringLiteral("requires %1, which the disabled %2 provides")
                .arg(service, providers.value(service));
        }
        if (someServicesUnknown) {
            return QStringLiteral("requires %1, which no enabled plug-in provides").arg(service);
        }
    }
    return QString();
}

bool DisabledPlugins::isEmpty() const
{
    return disabled.isEmpty();
}

QList<QPair<QString, QString>> DisabledPlugins::list() const
{
    return disabled;
}

} // namespace business
} // namespace base
} // namespace corvane
