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
    /// A filter with an empty field name, no patterns, the position and the operation UNKNOWN.
    PatternListFilter();

    /// Copies the name of the field tested into fieldName.
    void getFieldName(QString& fieldName) const;
    /// Sets the name of the field tested.
    void setFieldName(const QString& fieldName);
    /// Copies the patterns into patternList.
    void getPatternList(QStringList& patternList) const;
    /// Sets the patterns: plain texts, compared case-sensitively.
    void setPatternList(const QStringList& patternList);
    /// Copies where each pattern must occur into patternPosition.
    void getPatternPositionEnum(PatternPositionEnum& patternPosition) const;
    /// Sets where each pattern must occur.
    void setPatternPositionEnum(const PatternPositionEnum& patternPosition);
    /// Copies how the patterns' results are joined into logicOperation.
    void getLogicOperation(LogicOperationEnum& logicOperation) const;
    /// Sets how the patterns' results are joined: AND (all must match) or OR (one must match).
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
