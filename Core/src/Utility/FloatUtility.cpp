#include "Utility/FloatUtility.h"

#include <cmath>
#include <limits>

namespace corvane {
namespace base {
namespace core {
namespace utility {

namespace {

constexpr float largest = std::numeric_limits<float>::max();

template <class Round>
float rounded(float value, int decimals, Round round)
{
    if (std::isnan(value) || value > largest || value < -largest || decimals == 0) {
        return value;
    }
    const double factor = std::pow(10.0, decimals);
    return static_cast<float>(round(double(value) * factor) / factor);
}

} // namespace

int FloatUtility::getFloatState(float value)
{
    if (std::isnan(value)) {
        return 1;
    }
    if (value > largest) {
        return 2;
    }
    if (value < -largest) {
        return 3;
    }
    return 0;
}

float FloatUtility::floorValue(float value, int decimals)
{
    return rounded(value, decimals, [](double x) { return std::floor(x); });
}

float FloatUtility::ceilValue(float value, int decimals)
{
    return rounded(value, decimals, [](double x) { return std::ceil(x); });
}

} // namespace utility
} // namespace core
} // namespace base
} // namespace corvane
