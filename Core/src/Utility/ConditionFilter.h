#pragma once

#include "Utility/CompareOperationEnum.h"
#include "Utility/Filter.h"

#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Keeps an entity when "fieldName compareOperation fieldValue" holds.
class CORE_EXPORT ConditionFilter : public Filter
{
public:
    /// A condition with empty field name and value and the operation UNKNOWN.
    ConditionFilter();

    /// Copies the name of the field tested into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Sets the name of the field tested.
    void setFieldName(QString fieldName);
    /// Copies the comparison into compareOperation.
    void getCompareOperation(CompareOperationEnum& compareOperation) const;
    /// Sets the comparison ("=", "<>", "<", "<=", ">", ">=").
    void setCompareOperation(CompareOperationEnum compareOperation);
    /// Copies the value the field is compared with into fieldValue.
    void getFieldValue(QString& fieldValue) const;
    /// Sets the value the field is compared with, as text.
    void setFieldValue(QString fieldValue);

private:
    QString fieldName;
    CompareOperationEnum compareOperation;
    QString fieldValue;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
