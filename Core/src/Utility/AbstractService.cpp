#include "Utility/AbstractService.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IServiceManager.h"
#include "Logging/AssertionReport.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/GuardedConnection.h"

#include <QMetaObject>

namespace corvane {
namespace base {
namespace core {
namespace utility {

using base::interfaces::IService;

AbstractService::AbstractService() : registry(business::ManagerRegistry::instance()) { }

// A service still initialized when it goes (its plug-in's initialize() failed after it, say)
// must not stay registered, where it would be reached after it is gone.
AbstractService::~AbstractService()
{
    if (!m_initialized) {
        return;
    }
    try {
        getLogger()->logError(
            this, business::AssertionReport::text("!m_initialized", __FILE__, __LINE__));
    } catch (...) {
        // Without a logging manager there is nowhere to report it; a destructor must not throw.
    }
    try {
        if (registry->hasServiceManager()) {
            interfaces::IServiceManager* services = registry->getServiceManager();
            if (services->isServiceAvailable(registeredName)
                && services->getService(registeredName) == this) {
                services->unregisterService(registeredName);
            }
        }
    } catch (...) {
        // The service manager reports its own failures; a destructor must not throw.
    }
}

void AbstractService::initialize()
{
    if (m_initialized) {
        throw exceptions::PluginException(this, QStringLiteral("initialize()"),
                                          QStringLiteral("Service already initialized."));
    }
    getLogger()->logDebug(this, QStringLiteral("initialize: started."));
    resolveServices();
    getName(registeredName);
    registry->getServiceManager()->registerService(*this);
    getLogger()->logDebug(this, QStringLiteral("initialize: done."));
    m_initialized = true;
}

void AbstractService::deinitialize()
{
    if (!m_initialized) {
        throw exceptions::PluginException(this, QStringLiteral("deinitialize()"),
                                          QStringLiteral("Service not initialized."));
    }
    getLogger()->logDebug(this, QStringLiteral("deinitialize: started."));
    QString name;
    getName(name);
    registry->getServiceManager()->unregisterService(name);
    m_initialized = false;
    getLogger()->logDebug(this, QStringLiteral("deinitialize: done."));
}

void AbstractService::getName(QString& name)
{
    name = QString::fromLatin1(metaObject()->className());
}

void AbstractService::getVersion(QString& version)
{
    version = QStringLiteral("%1.%2.%3").arg(0).arg(12).arg(0);
}

bool AbstractService::isInitialized()
{
    return m_initialized;
}

base::interfaces::ILoggingManager* AbstractService::getLogger() const
{
    return registry->getLoggingManager();
}

void AbstractService::connectToMember(const QObject* sender, const char* signal,
                                      const QObject* receiver, const char* member,
                                      Qt::ConnectionType type)
{
    GuardedConnection::connect(this, getLogger(), sender, signal, receiver, member, type);
}

void AbstractService::disconnectFromMember(const QObject* sender, const char* signal,
                                           const QObject* receiver, const char* member)
{
    GuardedConnection::disconnect(this, getLogger(), sender, signal, receiver, member);
}

IService* AbstractService::getServiceForConcreteName(const QString& serviceName) const
{
    getLogger()->logDebug(this, QStringLiteral("getServiceForConcreteName: started."));
    IService* service = registry->getServiceManager()->getService(serviceName);
    getLogger()->logDebug(this, QStringLiteral("getServiceForConcreteName: done."));
    return service;
}

IService* AbstractService::getServiceForInterfaceName(const QString& name) const
{
    getLogger()->logDebug(this, QStringLiteral("getServiceForInterfaceName: started."));
    QString serviceName;
    resolveServiceName(&serviceName, name);
    IService* service = getServiceForConcreteName(serviceName);
    getLogger()->logDebug(this, QStringLiteral("getServiceForInterfaceName: done."));
    return service;
}

void AbstractService::assignMemberToServiceName(QString* member, const QString& name)
{
    getLogger()->logDebug(this, QStringLiteral("assignMemberToServiceName: started."));
    if (member == nullptr) {
        // "addService" is the operation's former name; callers and logs know it by that.
        const exceptions::NullPointerException exception(this, QStringLiteral("addService"),
                                                         QStringLiteral("Member is NULL."));
        getLogger()->logError(this, QString::fromUtf8(exception.what()));
        throw exception;
    }
    bindings.insert(member, name);
    getLogger()->logDebug(this, QStringLiteral("assignMemberToServiceName: done."));
}

void AbstractService::resolveServices()
{
    for (auto binding = bindings.cbegin(); binding != bindings.cend(); ++binding) {
        resolveServiceName(binding.key(), binding.value());
    }
}

// Exactly one service must match: an interface that two services implement is as unresolvable
// as one that none implements.
void AbstractService::resolveServiceName(QString* member, const QString& name) const
{
    getLogger()->logDebug(this, QStringLiteral("resolveServiceName: started."));
    QStringList names;
    registry->getServiceManager()->getServicesByInterface(name, names);
    if (names.size() != 1) {
        throw exceptions::ServiceUnavailableException(this, QStringLiteral("resolveServiceName"),
                                                      name + QStringLiteral(" not available."));
    }
    *member = names.first();
    getLogger()->logDebug(this, QStringLiteral("resolveServiceName: Service resolved: ") + name);
    getLogger()->logDebug(this, QStringLiteral("resolveServiceName: done."));
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
