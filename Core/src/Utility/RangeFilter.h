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
    RangeFilter();

    void getFieldName(QString& fieldName) const;
    void setFieldName(QString fieldName);
    void getMinValue(QString& minValue) const;
    void setMinValue(QString minValue);
    void getMaxValue(QString& maxValue) const;
    void setMaxValue(QString maxValue);
    void getFirstComparison(CompareOperationEnum& firstComparison) const;
    void setFirstComparison(CompareOperationEnum firstComparison);
    void getSecondComparison(CompareOperationEnum& secondComparison) const;
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
