#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace ColorUtilities {

// Conversions of doubles that may be NaN or out of range, where a plain cast
// would be undefined.

// Toward zero, clamped to 0..cap; NaN gives 0.
inline std::uint64_t toUnsignedSaturated(
    double value, std::uint64_t cap = std::numeric_limits<std::uint64_t>::max()) {
    if (!(value > 0.0)) return 0;
    if (value >= static_cast<double>(cap)) return cap;
    return static_cast<std::uint64_t>(value);
}

// Toward zero; NaN and values outside the range give the lowest int64, as the
// processor's conversion does.
inline std::int64_t toInt64Wrapping(double value) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!(value > -kLimit && value < kLimit)) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

}  // namespace ColorUtilities
