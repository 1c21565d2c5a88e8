#include "Utility/EqualityListFilter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

EqualityListFilter::EqualityListFilter() : Filter(FilterTypeEnum::EQUALITY_LIST_FILTER) { }

EqualityListFilter::EqualityListFilter(const QString& fieldName, const QStringList& fieldValues)
    : Filter(FilterTypeEnum::EQUALITY_LIST_FILTER), fieldName(fieldName), fieldValues(fieldValues)
{
}

void EqualityListFilter::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void EqualityListFilter::setFieldName(const QString& fieldName)
{
    this->fieldName = fieldName;
}

void EqualityListFilter::getFieldValues(QStringList& fieldValues) const
{
    fieldValues = this->fieldValues;
}

void EqualityListFilter::setFieldValues(const QStringList& fieldValues)
{
    this->fieldValues = fieldValues;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
