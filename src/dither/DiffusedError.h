#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "color/SampleTraits.h"

namespace ColorUtilities {

// The arithmetic of diffused errors: each pixel's error is shared out in
// sixteenths, a neighbour's accumulated error is damped when large (halved
// at most three times), and the sample plus its error is clamped to the box.
// Real samples do this in double.
template <typename T, bool = std::is_integral_v<T>>
struct DiffusedError {
    using Value = double;
    using Range = typename SampleTraits<T>::Difference;

    static Value difference(T wanted, T chosen) {
        return static_cast<double>(wanted) - static_cast<double>(chosen);
    }
    static Value share(Value error, int sixteenths) { return error * (sixteenths / 16.0); }

    static T corrected(T sample, Value error, Range range, T low, T high) {
        if (range != 0) error = damped(error, static_cast<double>(range));
        return std::max(low, std::min(high, static_cast<T>(static_cast<double>(sample) + error)));
    }

    // Large accumulated errors are damped before use, so that a run of pixels
    // far from every palette colour does not build up streaks.
    static double damped(double error, double range) {
        // Most errors are well under a quarter of the range, and are kept
        // without dividing: the margin leaves no doubt about how the ratio
        // would round.
        constexpr double kSafeQuarter = 0.25 * (1.0 - 0x1.0p-40);
        if (range >= 0x1.0p-1000 && std::abs(error) < range * kSafeQuarter) return error;
        const double ratio = std::abs(error) / range;
        if (ratio < 0.25) return error;
        if (ratio < 0.5) return error * 0.5;
        if (ratio < 0.75) return error * 0.25;
        return error * 0.125;
    }
};

// Integer samples: a pixel's error is a whole number, so every accumulated
// error is a whole number of sixteenths and every damped one of 128ths. Held
// as integers in those units they are exactly the values that doubles would
// hold, and the ratio to the range compares exactly too: the thresholds fall
// on whole sixteenths, which no rounding of the quotient could cross.
template <typename T>
struct DiffusedError<T, true> {
    // A pixel's own error in whole units, the shares and their sums in
    // sixteenths.
    using Value = std::int32_t;
    using Range = int;

    static Value difference(T wanted, T chosen) { return std::int32_t{wanted} - std::int32_t{chosen}; }
    static Value share(Value error, int sixteenths) { return error * sixteenths; }

    [[gnu::always_inline]] static T corrected(T sample, Value error, Range range, T low, T high) {
        // Most errors are under a quarter of the range and keep their value;
        // the test for that is all that each pixel waits for.
        const bool damped = range > 0 && std::abs(error) >= 4 * range;
        const std::int32_t wanted =
            std::int32_t{sample} * 128 + (damped ? dampedError(error, range) : error * 8);
        const std::int32_t clamped =
            std::max(std::int32_t{low} * 128, std::min(std::int32_t{high} * 128, wanted));
        // Half away from zero.
        return static_cast<T>(clamped >= 0 ? (clamped + 64) >> 7 : -((64 - clamped) >> 7));
    }

    // In 128ths: a ratio of a quarter or more halves the error, of a half or
    // more quarters it, of three quarters or more takes an eighth.
    [[gnu::noinline]] static std::int32_t dampedError(Value error, Range range) {
        const std::int32_t magnitude = std::abs(error);
        const int halvings = 1 + (magnitude >= 8 * range) + (magnitude >= 12 * range);
        return error * 8 >> halvings;
    }
};

}  // namespace ColorUtilities
