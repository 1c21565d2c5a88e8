#include "Exceptions/InvalidArgumentException.h"

namespace corvane {
namespace base {
namespace exceptions {

InvalidArgumentException::InvalidArgumentException(const QObject* sender, QString method,
                                                   QString reason)
    : BaseException(sender, std::move(method), std::move(reason))
{
}

InvalidArgumentException::InvalidArgumentException(const QString& source, QString method,
                                                   QString reason)
    : BaseException(source, std::move(method), std::move(reason))
{
}

InvalidArgumentException::InvalidArgumentException(const QObject* sender, QString method,
                                                   QString reason, QString translationContext,
                                                   QString translatableReason,
                                                   QList<QVariant> reasonArguments)
    : BaseException(sender, std::move(method), std::move(reason), std::move(translationContext),
                    std::move(translatableReason), std::move(reasonArguments))
{
}

InvalidArgumentException::InvalidArgumentException(const QString& source, QString method,
                                                   QString reason, QString translationContext,
                                                   QString translatableReason,
                                                   QList<QVariant> reasonArguments)
    : BaseException(source, std::move(method), std::move(reason), std::move(translationContext),
                    std::move(translatableReason), std::move(reasonArguments))
{
}

InvalidArgumentException::~InvalidArgumentException() = default;

} // namespace exceptions
} // namespace base
} // namespace corvane
