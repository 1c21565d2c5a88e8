#include "Utility/ISerializer.h"

namespace corvane {
namespace base {
namespace core {
namespace interfaces {

// Out of line, so that the interface's type information lives in the library.
ISerializer::~ISerializer() = default;

} // namespace interfaces
} // namespace core
} // namespace base
} // namespace corvane
