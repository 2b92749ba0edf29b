#pragma once

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace Quant {

// A palette channel from the mean of the samples it stands for: clamped to
// the value box, then, for the integer types, rounded with halves away from
// zero. A NaN mean clamps to the top of the box.
template <typename T>
T channelFromMean(double mean, T lowest, T highest) {
    const double clamped = std::max<double>(lowest, std::min<double>(highest, mean));
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(std::round(clamped));
    else
        return static_cast<T>(clamped);
}

}  // namespace Quant
