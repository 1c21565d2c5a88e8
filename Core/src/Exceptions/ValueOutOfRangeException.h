#pragma once

#include "Exceptions/BaseException.h"

namespace corvane {
namespace base {
namespace exceptions {

/// A value lay outside [lowerBound, upperBound]; both bounds travel with the exception.
class CORE_EXPORT ValueOutOfRangeException : public BaseException
{
public:
    /// Raised by sender in method for reason; lowerBound and upperBound are the allowed range.
    ValueOutOfRangeException(const QObject* sender, QString method, QString reason,
                             QVariant lowerBound = QVariant(), QVariant upperBound = QVariant());
    /// Raised by the code named source in method for reason; the bounds are the allowed range.
    ValueOutOfRangeException(const QString& source, QString method, QString reason,
                             QVariant lowerBound = QVariant(), QVariant upperBound = QVariant());
    ~ValueOutOfRangeException() override;

    /// The lowest allowed value, as given to the constructor (null when none was).
    const QVariant& getLowerBound() const;
    /// The highest allowed value, as given to the constructor (null when none was).
    const QVariant& getUpperBound() const;

private:
    QVariant upperBound;
    QVariant lowerBound;
};

} // namespace exceptions
} // namespace base
} // namespace corvane
