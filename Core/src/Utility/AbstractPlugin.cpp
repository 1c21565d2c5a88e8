#include "Utility/AbstractPlugin.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/ILoggingManager.h"
#include "Interfaces/IService.h"
#include "Logging/AssertionReport.h"
#include "StartUp/ManagerRegistry.h"
#include "Utility/GuardedConnection.h"

#include <QMetaObject>

namespace corvane {
namespace base {
namespace core {
namespace utility {

using base::interfaces::IService;

AbstractPlugin::AbstractPlugin()
    : loggingManager(business::ManagerRegistry::instance()->getLoggingManager())
{
}

AbstractPlugin::~AbstractPlugin()
{
    cleanupServices();
    if (m_initialized) {
        loggingManager->logError(
            this, business::AssertionReport::text("!m_initialized", __FILE__, __LINE__));
    }
}

// The bare class name: "corvane::demo::HelloPlugin" is named "HelloPlugin".
void AbstractPlugin::getName(QString& name)
{
    name.clear();
    const QStringList parts = QString::fromLatin1(metaObject()->className())
                                  .split(QStringLiteral("::"), Qt::SkipEmptyParts);
    if (!parts.isEmpty()) {
        name = parts.last();
    }
}

void AbstractPlugin::getVersion(QString& version)
{
    version = QStringLiteral("%1.%2.%3").arg(0).arg(12).arg(0);
}

void AbstractPlugin::getDescription(QString& description)
{
    description = this->description;
}

void AbstractPlugin::initialize()
{
    if (m_initialized) {
        throw exceptions::PluginException(this, QStringLiteral("initialize()"),
                                          QStringLiteral("Plugin already initialized."));
    }
    loggingManager->logDebug(this, QStringLiteral("initialize: started."));
    for (const auto& provided : qAsConst(providedServices)) {
        if (provided.second != nullptr) {
            provided.second->initialize();
        }
    }
    m_initialized = true;
    loggingManager->logDebug(this, QStringLiteral("initialize: done."));
}

void AbstractPlugin::deinitialize()
{
    if (!m_initialized) {
        throw exceptions::PluginException(this, QStringLiteral("deinitialize()"),
                                          QStringLiteral("Plugin not initialized."));
    }
    loggingManager->logDebug(this, QStringLiteral("deinitialize: started."));
    for (auto provided = providedServices.crbegin(); provided != providedServices.crend();
         ++provided) {
        if (provided->second != nullptr) {
            provided->second->deinitialize();
        }
    }
    m_initialized = false;
    loggingManager->logDebug(this, QStringLiteral("deinitialize: done."));
}

void AbstractPlugin::setConfiguration(QDomElement&) { }

void AbstractPlugin::getProvidedTasks(QStringList& tasks)
{
    tasks.clear();
    tasks.append(QStringLiteral("Base"));
}

void AbstractPlugin::getProvidedServices(QStringList& services)
{
    services.clear();
    for (const auto& provided : qAsConst(providedServices)) {
        services.append(provided.first);
    }
}

void AbstractPlugin::getRequiredServices(QStringList& services)
{
    services.clear();
    services.append(requiredServices);
}

void AbstractPlugin::getOptionalRequiredServices(QStringList& services)
{
    services.clear();
    services.append(optionalRequiredServices);
}

bool AbstractPlugin::checkCanClose()
{
    return true;
}

base::interfaces::ILoggingManager* AbstractPlugin::getLogger() const
{
    return loggingManager;
}

void AbstractPlugin::connectToMember(const QObject* sender, const char* signal,
                                     const QObject* receiver, const char* member,
                                     Qt::ConnectionType type)
{
    GuardedConnection::connect(this, loggingManager, sender, signal, receiver, member, type);
}

void AbstractPlugin::disconnectFromMember(const QObject* sender, const char* signal,
                                          const QObject* receiver, const char* member)
{
    GuardedConnection::disconnect(this, loggingManager, sender, signal, receiver, member);
}

void AbstractPlugin::addRequiredService(const QString& serviceName)
{
    requiredServices.append(serviceName);
}

void AbstractPlugin::addOptionalRequiredService(const QString& serviceName)
{
    optionalRequiredServices.append(serviceName);
}

void AbstractPlugin::addProvidedService(IService* service, const QString& name)
{
    providedServices.append(qMakePair(name, service));
}

IService* AbstractPlugin::getProvidedServiceForInterfaceName(const QString& name)
{
    for (auto provided = providedServices.crbegin(); provided != providedServices.crend();
         ++provided) {
        if (provided->first == name) {
            return provided->second;
        }
    }
    return nullptr;
}

void AbstractPlugin::cleanupServices()
{
    while (!providedServices.isEmpty()) {
        delete providedServices.takeLast().second;
    }
}

void AbstractPlugin::setDescription(const QString& description)
{
    this->description = description;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
