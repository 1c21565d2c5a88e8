#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// An argument was rejected; can carry a translatable reason for the user.
class CORE_EXPORT InvalidArgumentException : public BaseException
{
public:
    InvalidArgumentException(const QObject* sender, QString method, QString reason);
    InvalidArgumentException(const QString& source, QString method, QString reason);
    InvalidArgumentException(const QObject* sender, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments);
    InvalidArgumentException(const QString& source, QString method, QString reason,
                             QString translationContext, QString translatableReason,
                             QList<QVariant> reasonArguments);
    ~InvalidArgumentException() override;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
