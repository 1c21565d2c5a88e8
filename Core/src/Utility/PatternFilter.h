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
    /// A filter with empty field name and pattern and the position UNKNOWN.
    PatternFilter();

    /// Copies the name of the field tested into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Sets the name of the field tested.
    void setFieldName(QString fieldName);
    /// Copies the pattern into pattern.
    void getPattern(QString& pattern) const;
    /// Sets the pattern: plain text, compared case-sensitively.
    void setPattern(QString pattern);
    /// Copies where the pattern must occur into patternPosition.
    void getPatternPositionEnum(PatternPositionEnum& patternPosition) const;
    /// Sets where the pattern must occur.
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
