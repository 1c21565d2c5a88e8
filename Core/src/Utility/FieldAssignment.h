#pragma once

#include "CoreExport.h"

#include <QString>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// A field name with a value, both as text.
class CORE_EXPORT FieldAssignment
{
public:
    FieldAssignment(const QString& fieldName, const QString& fieldValue);

    void getFieldName(QString& fieldName) const;
    void getFieldValue(QString& fieldValue) const;

private:
    QString fieldName;
    QString fieldValue;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
