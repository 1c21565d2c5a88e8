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
    ComplexFilter();
    ~ComplexFilter();

    void addFilter(const LogicOperationEnum& operation, Filter* filter);
    void getFilter(QList<Filter*>& filters) const;
    void getLogicOperations(QList<LogicOperationEnum>& logicOperations) const;
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
