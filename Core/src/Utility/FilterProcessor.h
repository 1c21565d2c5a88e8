#pragma once

#include "CoreExport.h"

#include <QList>
#include <QObject>

namespace corvane {
namespace base {
namespace interfaces {
class ILoggingManager;
}
namespace core {
namespace entity {
class AbstractEntityBaseData;
class EntityBase;
} // namespace entity
namespace utility {

class ComplexFilter;
class ConditionFilter;
class EqualityListFilter;
class Filter;
class PatternFilter;
class PatternListFilter;
class RangeFilter;

/**
 * Evaluates a ComplexFilter over entities of one kind, read through the kind's field table.
 *
 * A chain reads as an OR of AND-groups: "NOP f0 OR f1 AND f2 AND NOT f3" keeps what passes f0,
 * plus what passes f1 and f2 and fails f3; an opening NOT negates the whole. The result keeps
 * the input order within each group, groups in turn, each entity once. A filter on a field the
 * table does not know lets every entity pass. Numbers compare by their difference truncated to
 * an integer (10.7 equals 10), dates by seconds, texts locale-aware.
 *
 * Errors are logged (qCritical) and thrown as InvalidOperationException or
 * InvalidArgumentException.
 */
class CORE_EXPORT FilterProcessor : public QObject
{
    Q_OBJECT

public:
    /// A processor for entities whose fields entityData reads; entityData is not owned.
    explicit FilterProcessor(entity::AbstractEntityBaseData* entityData);

    /// Replaces the content of result with the entities that pass filter; an empty chain passes
    /// all.
    void applyFilter(const QList<entity::EntityBase*>& entities, const ComplexFilter& filter,
                     QList<entity::EntityBase*>& result);
    /// Appends each entity to matched or notMatched, in input order; neither is cleared first.
    void doFiltering(const QList<entity::EntityBase*>& entities, const Filter* filter,
                     QList<entity::EntityBase*>& matched, QList<entity::EntityBase*>& notMatched);
    /// Whether entity passes the condition.
    bool useConditionFilter(const ConditionFilter& filter, const entity::EntityBase& entity);
    /// Whether entity's numeric or date field lies in the range.
    bool useRangeFilter(const RangeFilter& filter, const entity::EntityBase& entity);
    /// Whether entity's field holds the pattern at its position.
    bool usePatternFilter(const PatternFilter& filter, const entity::EntityBase& entity);
    /// Whether entity's field holds all (AND) or any (OR) of the patterns.
    bool usePatternListFilter(const PatternListFilter& filter, const entity::EntityBase& entity);
    /// Whether entity's field equals one of the filter's values.
    bool useEqualityListFilter(EqualityListFilter filter, const entity::EntityBase& entity);

private:
    template <class Kind>
    const Kind& castTo(const Filter* filter, const char* message);
    template <class Prepared>
    void split(const QList<entity::EntityBase*>& entities, const Prepared& prepared,
               QList<entity::EntityBase*>& matched, QList<entity::EntityBase*>& notMatched);

    base::interfaces::ILoggingManager* loggingManager;
    entity::AbstractEntityBaseData* entityData;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
