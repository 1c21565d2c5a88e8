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
    ConditionFilter();

    void getFieldName(QString& fieldName) const;
    void setFieldName(QString fieldName);
    void getCompareOperation(CompareOperationEnum& compareOperation) const;
    void setCompareOperation(CompareOperationEnum compareOperation);
    void getFieldValue(QString& fieldValue) const;
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
