#pragma once

#include "CoreExport.h"
#include "Utility/LogicOperationEnum.h"

#include <QList>

namespace corvane {
namespace base {
namespace core {
namespace utility {

class Filter;

/**
 * An ordered chain of filters, each with the logic operation that joins it to the ones before
 * (the first one's is NOP or NOT). The chain takes the filters it is given.
 *
 * Releasing the chain (clear() or destruction) deletes only the first ceil(n/2) of n filters:
 * existing callers keep and delete the others themselves, so this stays as it is.
 */
class CORE_EXPORT ComplexFilter
{
public:
    /// An empty chain.
    ComplexFilter();
    /// Releases the filters as clear() does.
    ~ComplexFilter();

    /// Appends filter, joined by operation; the chain takes the filter (null is accepted).
    void addFilter(const LogicOperationEnum& operation, Filter* filter);
    /// Copies the filter pointers into filters, in the order added; the chain keeps the filters.
    void getFilter(QList<Filter*>& filters) const;
    /// Copies the logic operations into logicOperations, in the order added.
    void getLogicOperations(QList<LogicOperationEnum>& logicOperations) const;
    /// Releases the filters (see above) and empties the chain.
    void clear();

private:
    Q_DISABLE_COPY(ComplexFilter)

    void releaseFilters();

    QList<Filter*> filters;
    QList<LogicOperationEnum> logicOperations;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
