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
    /// The value fieldValue for the field fieldName.
    FieldAssignment(const QString& fieldName, const QString& fieldValue);

    /// Copies the field's name into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Copies the value into fieldValue.
    void getFieldValue(QString& fieldValue) const;

private:
    QString fieldName;
    QString fieldValue;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
