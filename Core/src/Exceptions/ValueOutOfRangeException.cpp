#include "Exceptions/ValueOutOfRangeException.h"

namespace corvane {
namespace base {
namespace exceptions {

ValueOutOfRangeException::ValueOutOfRangeException(const QObject* sender, QString method,
                                                   QString reason, QVariant lowerBound,
                                                   QVariant upperBound)
    : BaseException(sender, std::move(method), std::move(reason)),
      upperBound(std::move(upperBound)),
      lowerBound(std::move(lowerBound))
{
}

ValueOutOfRangeException::ValueOutOfRangeException(const QString& source, QString method,
                                                   QString reason, QVariant lowerBound,
                                                   QVariant upperBound)
    : BaseException(source, std::move(method), std::move(reason)),
      upperBound(std::move(upperBound)),
      lowerBound(std::move(lowerBound))
{
}

ValueOutOfRangeException::~ValueOutOfRangeException() = default;

const QVariant& ValueOutOfRangeException::getLowerBound() const
{
    return lowerBound;
}

const QVariant& ValueOutOfRangeException::getUpperBound() const
{
    return upperBound;
}

} // namespace exceptions
} // namespace base
} // namespace corvane
