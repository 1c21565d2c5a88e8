#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// A value lay outside [lowerBound, upperBound]; both bounds travel with the exception.
class CORE_EXPORT ValueOutOfRangeException : public BaseException
{
public:
    ValueOutOfRangeException(const QObject* sender, QString method, QString reason,
                             QVariant lowerBound = QVariant(), QVariant upperBound = QVariant());
    ValueOutOfRangeException(const QString& source, QString method, QString reason,
                             QVariant lowerBound = QVariant(), QVariant upperBound = QVariant());
    ~ValueOutOfRangeException() override;

    const QVariant& getLowerBound() const;
    const QVariant& getUpperBound() const;

private:
    QVariant upperBound;
    QVariant lowerBound;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
