#include "Utility/EntityBase.h"

namespace corvane {
namespace base {
namespace core {
namespace entity {

EntityBase::EntityBase() = default;

EntityBase::~EntityBase() = default;

} // namespace entity
} // namespace core
} // namespace base
} // namespace corvane
