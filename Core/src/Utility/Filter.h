#pragma once

#include "CoreExport.h"
#include "Utility/FilterTypeEnum.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Base of the filter kinds; the type tells FilterProcessor which kind it is.
class CORE_EXPORT Filter
{
public:
    /// A filter of the kind type, which never changes.
    explicit Filter(FilterTypeEnum::Enum type);
    virtual ~Filter();

    /// The filter's kind.
    FilterTypeEnum::Enum getType() const;

private:
    FilterTypeEnum::Enum type;
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
