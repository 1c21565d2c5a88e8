#pragma once

#include "Utility/Filter.h"
#include "Utility/PatternPositionEnum.h"

#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Keeps an entity whose field's text holds the plain-text pattern at the given position.
class CORE_EXPORT PatternFilter : public Filter
{
public:
    PatternFilter();

    void getFieldName(QString& fieldName) const;
    void setFieldName(QString fieldName);
    void getPattern(QString& pattern) const;
    void setPattern(QString pattern);
    void getPatternPositionEnum(PatternPositionEnum& patternPosition) const;
    void setPatternPositionEnum(PatternPositionEnum patternPosition);

private:
    QString fieldName;
    QString pattern;
    PatternPositionEnum patternPosition;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
