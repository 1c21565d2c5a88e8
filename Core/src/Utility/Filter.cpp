#include "Utility/Filter.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

Filter::Filter(FilterTypeEnum::Enum type) : type(type) { }

Filter::~Filter() = default;

FilterTypeEnum::Enum Filter::getType() const
{
    return type;
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
