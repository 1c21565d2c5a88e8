#pragma once

#include "Utility/CompareOperationEnum.h"
#include "Utility/Filter.h"

#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Keeps an entity when "minValue firstComparison field" and "field secondComparison maxValue" hold
/// (each comparison "<" or "<=").
class CORE_EXPORT RangeFilter : public Filter
{
public:
    /// A range with empty field name and bounds and both comparisons UNKNOWN.
    RangeFilter();

    /// Copies the name of the field tested into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Sets the name of the field tested; it must be numeric or a date.
    void setFieldName(QString fieldName);
    /// Copies the lower bound into minValue.
    void getMinValue(QString& minValue) const;
    /// Sets the lower bound, as text (a number or an ISO date).
    void setMinValue(QString minValue);
    /// Copies the upper bound into maxValue.
    void getMaxValue(QString& maxValue) const;
    /// Sets the upper bound, as text (a number or an ISO date).
    void setMaxValue(QString maxValue);
    /// Copies the comparison of the lower bound with the field into firstComparison.
    void getFirstComparison(CompareOperationEnum& firstComparison) const;
    /// Sets the comparison of the lower bound with the field: "<" or "<=".
    void setFirstComparison(CompareOperationEnum firstComparison);
    /// Copies the comparison of the field with the upper bound into secondComparison.
    void getSecondComparison(CompareOperationEnum& secondComparison) const;
    /// Sets the comparison of the field with the upper bound: "<" or "<=".
    void setSecondComparison(CompareOperationEnum secondComparison);

private:
    QString fieldName;
    QString minValue;
    QString maxValue;
    CompareOperationEnum firstComparison;
    CompareOperationEnum secondComparison;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
