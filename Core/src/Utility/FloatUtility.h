#pragma once

#include "CoreExport.h"

namespace corvane {
namespace base {
namespace core {
namespace utility {

/// Classifying and rounding single-precision values.
class CORE_EXPORT FloatUtility
{
public:
    /// 1 not a number, 2 positive infinity, 3 negative infinity, 0 finite.
    static int getFloatState(float value);
    /// Rounded toward negative infinity at decimals places (tens, hundreds... when negative);
    /// 0 decimals and non-finite values come back unchanged.
    static float floorValue(float value, int decimals);
    /// As floorValue(), toward positive infinity.
    static float ceilValue(float value, int decimals);
};

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
