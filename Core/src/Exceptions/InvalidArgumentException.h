#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// An argument was rejected; can carry a translatable reason for the user.
class CORE_EXPORT InvalidArgumentException : public BaseException
{
public:
    /// Raised by sender (its class name becomes the source) in method, for reason.
    InvalidArgumentException(const QObject* sender, QString method, QString reason);
    /// Raised by the code named source in method, for reason.
    InvalidArgumentException(const QString& source, QString method, QString reason);
    /// As the sender form, with the pieces of a translated reason (see BaseException).
    InvalidArgumentException(const QObject* sender, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments);
    /// As the source-text form, with the pieces of a translated reason (see BaseException).
    InvalidArgumentException(const QString& source, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments);
    ~InvalidArgumentException() override;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
