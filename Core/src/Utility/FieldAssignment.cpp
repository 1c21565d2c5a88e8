#include "Utility/FieldAssignment.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

FieldAssignment::FieldAssignment(const QString& fieldName, const QString& fieldValue)
    : fieldName(fieldName), fieldValue(fieldValue)
{
}

void FieldAssignment::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void FieldAssignment::getFieldValue(QString& fieldValue) const
{
    fieldValue = this->fieldValue;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
