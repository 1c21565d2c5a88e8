#include "Utility/PatternListFilter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

PatternListFilter::PatternListFilter() : Filter(FilterTypeEnum::PATTERN_LIST_FILTER) { }

void PatternListFilter::getFieldName(QString& fieldName) const
{
    fieldName = this->fieldName;
}

void PatternListFilter::setFieldName(const QString& fieldName)
{
    this->fieldName = fieldName;
}

void PatternListFilter::getPatternList(QStringList& patternList) const
{
    patternList = this->patternList;
}

void PatternListFilter::setPatternList(const QStringList& patternList)
{
    this->patternList = patternList;
}

void PatternListFilter::getPatternPositionEnum(PatternPositionEnum& patternPosition) const
{
    patternPosition = this->patternPosition;
}

void PatternListFilter::setPatternPositionEnum(const PatternPositionEnum& patternPosition)
{
    this->patternPosition = patternPosition;
}

void PatternListFilter::getLogicOperation(LogicOperationEnum& logicOperation) const
{
    logicOperation = this->logicOperation;
}

void PatternListFilter::setLogicOperation(const LogicOperationEnum& logicOperation)
{
    this->logicOperation = logicOperation;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
