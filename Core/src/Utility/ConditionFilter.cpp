#include "Utility/ConditionFilter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

ConditionFilter::ConditionFilter() : Filter(FilterTypeEnum::CONDITION_FILTER) { }

void ConditionFilter::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void ConditionFilter::setFieldName(QString fieldName)
{
    this->fieldName = fieldName;
}

void ConditionFilter::getCompareOperation(CompareOperationEnum& compareOperation) const
{
    compareOperation = this->compareOperation;
}

void ConditionFilter::setCompareOperation(CompareOperationEnum compareOperation)
{
    this->compareOperation = compareOperation;
}

void ConditionFilter::getFieldValue(QString& fieldValue) const
{
    fieldValue = this->fieldValue;
}

void ConditionFilter::setFieldValue(QString fieldValue)
{
    this->fieldValue = fieldValue;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
