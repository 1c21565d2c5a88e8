#pragma once

#include "CoreExport.h"

#include <QObject>
#include <QString>
#include <QStringList>

class QDomElement;

namespace corvane {
namespace base {
namespace interfaces {

/**
 * What the plug-in manager asks of a plug-in: the root object of a Qt plug-in library
 * implements it (usually through AbstractPlugin) and names it in Q_INTERFACES.
 *
 * Plug-ins are owned and destroyed by their library's loader, never through this interface,
 * hence the protected, non-virtual destructor.
 */
class CORE_EXPORT IPlugin
{
public:
    /// Writes the plug-in's name, by which the plug-in manager knows it.
    virtual void getName(QString& name) = 0;
    /// Writes the plug-in's version text.
    virtual void getVersion(QString& version) = 0;
    /// Writes a free description of the plug-in.
    virtual void getDescription(QString& description) = 0;
    /// Starts the plug-in, once the services it requires are available.
    virtual void initialize() = 0;
    /// Stops the plug-in; it may be started again.
    virtual void deinitialize() = 0;
    /// The tasks for which the plug-in is to be initialized ("Base" at start-up).
    virtual void getProvidedTasks(QStringList& tasks) = 0;
    /// Names of the services the plug-in provides; others that require them start after it.
    virtual void getProvidedServices(QStringList& services) = 0;
    /// Services that must be available before the plug-in starts.
    virtual void getRequiredServices(QStringList& services) = 0;
    /// Services the plug-in uses when some plug-in provides them.
    virtual void getOptionalRequiredServices(QStringList& services) = 0;
    /// The plug-in's "configuration" element of the configuration file.
    virtual void setConfiguration(QDomElement& configuration) = 0;
    /// Whether the application may close now, for example with no unsaved data.
    virtual bool checkCanClose() = 0;

protected:
    ~IPlugin() = default;
};

} // namespace interfaces
} // namespace base
} // namespace corvane

Q_DECLARE_INTERFACE(corvane::base::interfaces::IPlugin, "de.corvane.plugin.IPlugin/1.0")
