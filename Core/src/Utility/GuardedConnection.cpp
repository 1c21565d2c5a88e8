#include "Utility/GuardedConnection.h"

#include "Exceptions/Exceptions.h"
#include "Interfaces/ILoggingManager.h"

#include <QObject>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

template <class Exception>
[[noreturn]] void raise(const QObject* owner, base::interfaces::ILoggingManager* logger,
                        const QString& reason)
{
    const Exception exception(owner, QStringLiteral("connectToMember"), reason);
    logger->logError(owner, QString::fromUtf8(exception.what()));
    throw exception;
}

} // namespace

void GuardedConnection::connect(const QObject* owner, base::interfaces::ILoggingManager* logger,
                                const QObject* sender, const char* signal, const QObject* receiver,
                                const char* member, Qt::ConnectionType type)
{
    using exceptions::NullPointerException;
    logger->logDebug(owner, QStringLiteral("connectToMember: started."));
    if (sender == nullptr) {
        raise<NullPointerException>(owner, logger, QStringLiteral("Sender is NULL."));
    }
    if (signal == nullptr) {
        raise<NullPointerException>(owner, logger, QStringLiteral("SignalString is NULL."));
    }
    if (receiver == nullptr) {
        raise<NullPointerException>(owner, logger, QStringLiteral("Receiver is NULL."));
    }
    if (member == nullptr) {
        raise<NullPointerException>(owner, logger, QStringLiteral("Membername is NULL."));
    }
    if (!QObject::connect(sender, signal, receiver, member, type)) {
        raise<exceptions::ConnectFailedException>(
            owner, logger,
            QStringLiteral("Could not connect %1:%2 to %3:%4")
                .arg(sender->objectName(), QString::fromUtf8(signal), receiver->objectName(),
                     QString::fromUtf8(member)));
    }
    logger->logDebug(owner, QStringLiteral("connectToMember: done."));
}

void GuardedConnection::disconnect(const QObject* owner, base::interfaces::ILoggingManager* logger,
                                   const QObject* sender, const char* signal,
                                   const QObject* receiver, const char* member)
{
    logger->logDebug(owner, QStringLiteral("disconnectFromMember: started."));
    // Deliberately not the order of connect().
    const char* missing = sender == nullptr ? "Sender is NULL."
        : receiver == nullptr               ? "Receiver is NULL."
        : signal == nullptr                 ? "SignalString is NULL."
        : member == nullptr                 ? "Membername is NULL."
                                            : nullptr;
    if (missing != nullptr) {
        logger->logError(owner, QStringLiteral("disconnectFromMember: ") + QLatin1String(missing));
    } else if (!QObject::disconnect(sender, signal, receiver, member)) {
        logger->logError(owner,
                         QStringLiteral("disconnectFromMember: Could not disconnect "
                                        "%1:%2 from %3:%4")
                             .arg(sender->objectName(), QString::fromUtf8(signal),
                                  receiver->objectName(), QString::fromUtf8(member)));
    }
    logger->logDebug(owner, QStringLiteral("disconnectFromMember: done."));
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
