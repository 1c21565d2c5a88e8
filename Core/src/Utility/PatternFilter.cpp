#include "Utility/PatternFilter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

PatternFilter::PatternFilter() : Filter(FilterTypeEnum::PATTERN_FILTER) { }

void PatternFilter::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void PatternFilter::setFieldName(QString fieldName)
{
    this->fieldName = fieldName;
}

void PatternFilter::getPattern(QString& pattern) const
{
    pattern = this->pattern;
}

void PatternFilter::setPattern(QString pattern)
{
    this->pattern = pattern;
}

void PatternFilter::getPatternPositionEnum(PatternPositionEnum& patternPosition) const
{
    patternPosition = this->patternPosition;
}

void PatternFilter::setPatternPositionEnum(PatternPositionEnum patternPosition)
{
    this->patternPosition = patternPosition;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
