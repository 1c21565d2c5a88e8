#pragma once

#include "Interfaces/IService.h"

#include <QHash>

namespace corvane {
namespace base {
namespace business {
class ManagerRegistry;
}
namespace interfaces {
class ILoggingManager;
}
namespace core {
namespace utility {

/**
 * Base class of services. A service registers itself at the service manager when it is
 * initialized, under its fully qualified class name, and unregisters when deinitialized.
 *
 * Dependencies are bound late: in its constructor a service names, for a QString member, the
 * interface id or class name it needs; initialize() writes the name of the one service that
 * implements it into the member, and the service fetches it with getServiceForConcreteName()
 * whenever it needs it.
 *
 *     class Greeter : public AbstractService, public IGreeter
 *     {
 *         Q_OBJECT
 *         Q_INTERFACES(IGreeter)
 *     public:
 *         Greeter() { assignMemberToServiceName(&clock, "de.example.IClock/1.0"); }
 *     private:
 *         QString clock;
 *     };
 */
class CORE_EXPORT AbstractService : public base::interfaces::IService
{
    Q_OBJECT

public:
    /// Takes the manager registry; no bindings, not initialized.
    AbstractService();
    /// A service destroyed while initialized is logged as an error and unregistered.
    ~AbstractService() override;

    /// Resolves the bindings, then registers the service.
    void initialize() override;
    /// Unregisters the service.
    void deinitialize() override;
    /// Writes the fully qualified class name, the service's name at the service manager.
    void getName(QString& name) override;
    /// Writes "0.12.0".
    void getVersion(QString& version) override;
    /// Whether initialize() has run and deinitialize() has not.
    virtual bool isInitialized();
    /// The registry's logging manager.
    virtual base::interfaces::ILoggingManager* getLogger() const;
    /// QObject::connect() with SIGNAL() and SLOT() strings; throws NullPointerException for a null
    /// argument and ConnectFailedException when Qt refuses the connection.
    virtual void connectToMember(const QObject* sender, const char* signal, const QObject* receiver,
                                 const char* member, Qt::ConnectionType type = Qt::AutoConnection);
    /// QObject::disconnect() of such a connection; failures are only logged.
    virtual void disconnectFromMember(const QObject* sender, const char* signal,
                                      const QObject* receiver, const char* member);
    /// The registered service named serviceName; throws ServiceManagerException when there is none.
    virtual base::interfaces::IService* getServiceForConcreteName(const QString& serviceName) const;
    /// The one registered service that implements name; throws ServiceUnavailableException
    /// when none or several do.
    virtual base::interfaces::IService* getServiceForInterfaceName(const QString& name) const;
    /// Binds member to the service implementing the interface (or class) name.
    virtual void assignMemberToServiceName(QString* member, const QString& name);
    /// Resolves every binding (resolveServiceName()); the first failure ends it with its exception.
    virtual void resolveServices();
    /// Writes the name of the one registered service implementing name into *member; throws
    /// ServiceUnavailableException when none or several do.
    virtual void resolveServiceName(QString* member, const QString& name) const;

private:
    Q_DISABLE_COPY(AbstractService)

    bool m_initialized = false;
    QHash<QString*, QString> bindings;
    business::ManagerRegistry* registry;
    QString registeredName; // the name under which initialize() registered the service
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
