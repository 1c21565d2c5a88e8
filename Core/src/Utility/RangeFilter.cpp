#include "Utility/RangeFilter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

RangeFilter::RangeFilter() : Filter(FilterTypeEnum::RANGE_FILTER) { }

void RangeFilter::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void RangeFilter::setFieldName(QString fieldName)
{
    this->fieldName = fieldName;
}

void RangeFilter::getMinValue(QString& minValue) const
{
    minValue = this->minValue;
}

void RangeFilter::setMinValue(QString minValue)
{
    this->minValue = minValue;
}

void RangeFilter::getMaxValue(QString& maxValue) const
{
    maxValue = this->maxValue;
}

void RangeFilter::setMaxValue(QString maxValue)
{
    this->maxValue = maxValue;
}

void RangeFilter::getFirstComparison(CompareOperationEnum& firstComparison) const
{
    firstComparison = this->firstComparison;
}

void RangeFilter::setFirstComparison(CompareOperationEnum firstComparison)
{
    this->firstComparison = firstComparison;
}

void RangeFilter::getSecondComparison(CompareOperationEnum& secondComparison) const
{
    secondComparison = this->secondComparison;
}

void RangeFilter::setSecondComparison(CompareOperationEnum secondComparison)
{
    this->secondComparison = secondComparison;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
