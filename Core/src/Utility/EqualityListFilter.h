#pragma once

#include "Utility/Filter.h"

#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Keeps an entity whose field's text equals one of the values.
class CORE_EXPORT EqualityListFilter : public Filter
{
public:
    /// A filter with an empty field name and no values.
    EqualityListFilter();
    /// A filter that keeps entities whose field fieldName equals one of fieldValues.
    EqualityListFilter(const QString& fieldName, const QStringList& fieldValues);

    /// Copies the name of the field tested into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Sets the name of the field tested.
    void setFieldName(const QString& fieldName);
    /// Copies the accepted values into fieldValues.
    void getFieldValues(QStringList& fieldValues) const;
    /// Sets the accepted values; an empty list accepts none.
    void setFieldValues(const QStringList& fieldValues);

private:
    QString fieldName;
    QStringList fieldValues;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
