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
    EqualityListFilter();
    EqualityListFilter(const QString& fieldName, const QStringList& fieldValues);

    void getFieldName(QString& fieldName) const;
    void setFieldName(const QString& fieldName);
    void getFieldValues(QStringList& fieldValues) const;
    void setFieldValues(const QStringList& fieldValues);

private:
    QString fieldName;
    QStringList fieldValues;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
