#pragma once

#include "Utility/Filter.h"
#include "Utility/LogicOperationEnum.h"
#include "Utility/PatternPositionEnum.h"

#include <QString>
#include <QStringList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Keeps an entity whose field's text holds all (AND) or any (OR) of the patterns.
class CORE_EXPORT PatternListFilter : public Filter
{
public:
    PatternListFilter();

    void getFieldName(QString& fieldName) const;
    void setFieldName(const QString& fieldName);
    void getPatternList(QStringList& patternList) const;
    void setPatternList(const QStringList& patternList);
    void getPatternPositionEnum(PatternPositionEnum& patternPosition) const;
    void setPatternPositionEnum(const PatternPositionEnum& patternPosition);
    void getLogicOperation(LogicOperationEnum& logicOperation) const;
    void setLogicOperation(const LogicOperationEnum& logicOperation);

private:
    QString fieldName;
    QStringList patternList;
    PatternPositionEnum patternPosition;
    LogicOperationEnum logicOperation;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
