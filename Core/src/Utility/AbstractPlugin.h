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
    AbstractPlugin();
    ~AbstractPlugin() override;

    void getName(QString& name) override;
    void getVersion(QString& version) override;
    void getDescription(QString& description) override;
    void initialize() override;
    void deinitialize() override;
    void setConfiguration(QDomElement& configuration) override;
    void getProvidedTasks(QStringList& tasks) override;
    void getProvidedServices(QStringList& services) override;
    void getRequiredServices(QStringList& services) override;
    void getOptionalRequiredServices(QStringList& services) override;
    bool checkCanClose() override;
    virtual base::interfaces::ILoggingManager* getLogger() const;
    virtual void connectToMember(const QObject* sender, const char* signal, const QObject* receiver,
                                 const char* member, Qt::ConnectionType type = Qt::AutoConnection);
    virtual void disconnectFromMember(const QObject* sender, const char* signal,
                                      const QObject* receiver, const char* member);
    virtual void addRequiredService(const QString& serviceName);
    virtual void addOptionalRequiredService(const QString& serviceName);
    /// Takes ownership of service.
    virtual void addProvidedService(base::interfaces::IService* service, const QString& name);
    /// The service last added under name, or null.
    virtual base::interfaces::IService* getProvidedServiceForInterfaceName(const QString& name);
    /// Deletes the provided services, last added first.
    virtual void cleanupServices();
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
