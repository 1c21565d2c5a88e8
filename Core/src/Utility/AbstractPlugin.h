#pragma once

#include "Interfaces/IPlugin.h"

#include <QList>
#include <QObject>
#include <QPair>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
class IService;
} // namespace interfaces
namespace core {
namespace utility {

/**
 * Base class of plug-ins. A plug-in declares the services it requires and provides, usually in
 * its constructor, and owns the services it provides: they are initialized with the plug-in in
 * the order of addition, deinitialized in reverse order, and deleted with the plug-in.
 *
 *     class HelloPlugin : public corvane::base::core::utility::AbstractPlugin
 *     {
 *         Q_OBJECT
 *         Q_PLUGIN_METADATA(IID "de.corvane.plugin.IPlugin/1.0")
 *         Q_INTERFACES(corvane::base::interfaces::IPlugin)
 *     public:
 *         HelloPlugin() { addProvidedService(new Greeter, "example::Greeter"); }
 *     };
 *
 * The plug-in's name is its bare class name ("HelloPlugin"), its task "Base".
 */
class CORE_EXPORT AbstractPlugin : public QObject, public base::interfaces::IPlugin
{
    Q_OBJECT
    Q_INTERFACES(corvane::base::interfaces::IPlugin)

public:
    /// Takes the logging manager from the manager registry; no services, not initialized.
    AbstractPlugin();
    /// Deletes the provided services; a plug-in destroyed while initialized is logged as an error.
    ~AbstractPlugin() override;

    /// Writes the bare class name (without namespaces).
    void getName(QString& name) override;
    /// Writes "0.12.0".
    void getVersion(QString& version) override;
    void getDescription(QString& description) override;
    /// Initializes the provided services in the order of addition; throws PluginException when
    /// the plug-in is initialized already.
    void initialize() override;
    /// Deinitializes the provided services in reverse order; throws PluginException when the
    /// plug-in is not initialized.
    void deinitialize() override;
    /// Does nothing; a plug-in that reads its configuration element overrides it.
    void setConfiguration(QDomElement& configuration) override;
    /// The one task "Base".
    void getProvidedTasks(QStringList& tasks) override;
    /// The names under which the services were added, in order.
    void getProvidedServices(QStringList& services) override;
    /// The services added with addRequiredService().
    void getRequiredServices(QStringList& services) override;
    /// The services added with addOptionalRequiredService().
    void getOptionalRequiredServices(QStringList& services) override;
    /// True; a plug-in that may hold the application open overrides it.
    bool checkCanClose() override;
    /// The logging manager.
    virtual base::interfaces::ILoggingManager* getLogger() const;
    /// QObject::connect() with SIGNAL() and SLOT() strings; throws NullPointerException for a null
    /// argument and ConnectFailedException when Qt refuses the connection.
    virtual void connectToMember(const QObject* sender, const char* signal, const QObject* receiver,
                                 const char* member, Qt::ConnectionType type = Qt::AutoConnection);
    /// QObject::disconnect() of such a connection; failures are only logged.
    virtual void disconnectFromMember(const QObject* sender, const char* signal,
                                      const QObject* receiver, const char* member);
    /// Adds a service that must be available before the plug-in starts.
    virtual void addRequiredService(const QString& serviceName);
    /// Adds a service that the plug-in uses when some plug-in provides it.
    virtual void addOptionalRequiredService(const QString& serviceName);
    /// Takes ownership of service.
    virtual void addProvidedService(base::interfaces::IService* service, const QString& name);
    /// The service last added under name, or null.
    virtual base::interfaces::IService* getProvidedServiceForInterfaceName(const QString& name);
    /// Deletes the provided services, last added first.
    virtual void cleanupServices();
    /// Sets the text that getDescription() writes.
    virtual void setDescription(const QString& description);

private:
    Q_DISABLE_COPY(AbstractPlugin)

    bool m_initialized = false;
    base::interfaces::ILoggingManager* loggingManager;
    QStringList requiredServices;
    QStringList optionalRequiredServices;
    QList<QPair<QString, base::interfaces::IService*>> providedServices;
    QString description;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
