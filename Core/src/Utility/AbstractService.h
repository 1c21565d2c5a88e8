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
    AbstractService();
    ~AbstractService() override;

    /// Resolves the bindings, then registers the service.
    void initialize() override;
    /// Unregisters the service.
    void deinitialize() override;
    void getName(QString& name) override;
    void getVersion(QString& version) override;
    virtual bool isInitialized();
    virtual base::interfaces::ILoggingManager* getLogger() const;
    virtual void connectToMember(const QObject* sender, const char* signal, const QObject* receiver,
                                 const char* member, Qt::ConnectionType type = Qt::AutoConnection);
    virtual void disconnectFromMember(const QObject* sender, const char* signal,
                                      const QObject* receiver, const char* member);
    virtual base::interfaces::IService* getServiceForConcreteName(const QString& serviceName) const;
    virtual base::interfaces::IService* getServiceForInterfaceName(const QString& name) const;
    /// Binds member to the service implementing the interface (or class) name.
    virtual void assignMemberToServiceName(QString* member, const QString& name);
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
