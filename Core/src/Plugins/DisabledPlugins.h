#pragma once

#include "Configuration/PluginConfiguration.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QStringList>

namespace corvane {
namespace base {
namespace business {

/**
 * Which plug-ins a start leaves out, and why: entries written \<plugin enabled="false">, the
 * plug-ins or libraries named in CORVANE_DISABLE_PLUGINS (comma-separated), those the user
 * disabled after one ended a start, those left out of this start only, and then the plug-ins
 * that require a service (not optionally) that only a disabled plug-in would provide.
 *
 * A library is named by its stem or any configured form ("Report", "Report.dll",
 * "libReport.so"); a plug-in by its name, which is known only once its library is loaded.
 */
class CORE_EXPORT DisabledPlugins
{
public:
    /// The names in CORVANE_DISABLE_PLUGINS.
    static QStringList fromEnvironment();

    /// Starts over for a new start with the plug-ins or libraries named in CORVANE_DISABLE_PLUGINS,
    /// those the user disabled until they are enabled again and those left out of this start only;
    /// forgets the plug-ins noted as disabled.
    void reset(const QStringList& byEnvironment, const QStringList& untilEnabled,
               const QStringList& thisStartOnly);

    /// Why the entry is not to be loaded at all; empty when it is to be loaded.
    QString reasonBeforeLoading(const entities::PluginConfiguration& configuration) const;
    /// Why the loaded plug-in is to be left out; empty when it is not.
    QString reasonAfterLoading(const QString& plugin) const;
    /// Notes a disabled plug-in (or library, when its services are unknown: never loaded).
    void add(const QString& name, const QString& reason, const QStringList& providedServices,
             bool servicesKnown);
    /// Why a plug-in with these required services goes with the disabled ones, given what the
    /// plug-ins still enabled provide; empty when it does not.
    QString reasonAsDependent(const QStringList& requiredServices,
                              const QStringList& enabledServices) const;

    /// Whether no plug-in or library was noted as disabled.
    bool isEmpty() const;
    /// Each disabled plug-in or library with why, in the order they were disabled.
    QList<QPair<QString, QString>> list() const;

private:
    QString reasonFor(const QString& name, bool isLibrary) const;

    QStringList byEnvironment;
    QStringList untilEnabled;
    QStringList thisStartOnly;
    QList<QPair<QString, QString>> disabled;
    QHash<QString, QString> providers; // service -> disabled plug-in that provides it
    bool someServicesUnknown = false;
};

} // namespace business
} // namespace base
} // namespace corvane
