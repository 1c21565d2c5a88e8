#include "Utility/SerializerFactory.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/ILoggingManager.h"
#include "StartUp/ManagerRegistry.h"

#include <QMutex>
#include <QMutexLocker>

namespace corvane {
namespace base {
namespace core {
namespace utility {

using base::interfaces::ILoggingManager;

namespace {
const QString source = QStringLiteral("SerializerFactory");
}

SerializerFactory* SerializerFactory::instance()
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    static SerializerFactory factory;
    SerializerFactory* address = &factory;
    if (address == nullptr) {
        throw exceptions::NullPointerException(
            source, QStringLiteral("SerializerFactory::instance()"),
            QStringLiteral("Initialization of SerializerFactory failed."));
    }
    return address;
}

SerializerFactory::SerializerFactory()
    : loggingManager(business::ManagerRegistry::instance()->getLoggingManager())
{
}

void SerializerFactory::registerSerializer(QString name, Creator creator)
{
    log(ILoggingManager::DEBUG, QStringLiteral("registerSerializer: ") + name);
    if (!creators.contains(name)) {
        creators.insert(name, creator);
        log(ILoggingManager::DEBUG,
            QStringLiteral("registerSerializer: ") + name + QStringLiteral(" registered."));
    } else {
        log(ILoggingManager::ERROR,
            QStringLiteral("registerSerializer: ") + name + QStringLiteral(" ALREADY registered."));
    }
    log(ILoggingManager::DEBUG, QStringLiteral("registerSerializer done."));
}

void SerializerFactory::unregisterSerializer(QString name)
{
    log(ILoggingManager::DEBUG, QStringLiteral("unregisterSerializer: ") + name);
    if (creators.remove(name) > 0) {
        log(ILoggingManager::DEBUG,
            QStringLiteral("unregisterSerializer: ") + name + QStringLiteral(" unregistered."));
    } else {
        log(ILoggingManager::ERROR,
            QStringLiteral("unregisterSerializer: ") + name + QStringLiteral(" unknown."));
    }
    log(ILoggingManager::DEBUG, QStringLiteral("unregisterSerializer done."));
}

interfaces::ISerializer* SerializerFactory::createSerializer(const QString& name)
{
    static QMutex mutex;
    QMutexLocker locker(&mutex);
    const Creator creator = creators.value(name, nullptr);
    locker.unlock(); // a creator may ask the factory for the serializers it is made of
    if (creator != nullptr) {
        return creator();
    }
    log(ILoggingManager::ERROR,
        QStringLiteral("createSerializer: ") + name + QStringLiteral(" is unknown."));
    throw exceptions::InvalidArgumentException(source, QStringLiteral("createSerializer"),
                                               QStringLiteral("Serializer unknown: ") + name);
}

// The text is only handed over when the level is on.
void SerializerFactory::log(int level, const QString& text) const
{
    const auto loglevel = static_cast<ILoggingManager::Loglevel>(level);
    if (loggingManager->isLoglevelSet(source, loglevel)) {
        loggingManager->logEntry(loglevel, source, text, false);
    }
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
