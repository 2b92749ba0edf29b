#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "color/Color.h"

namespace ColorUtilities {

// Squared Euclidean distance, unweighted, in double.
template <typename T, int N>
double colorDistance(const Color<T, N> &a, const Color<T, N> &b) {
    double sum = 0.0;
    for (int k = 0; k <= N; ++k) {
        const double d = std::abs(static_cast<double>(a[k]) - static_cast<double>(b[k]));
        sum += d * d;
    }
    return sum;
}

// The tie-break between two colours at equal distance from target: the one
// nearer in the first channel where they differ. Differences are taken in the
// promoted type of T (int, float or double), exactly as the samples compare.
template <typename T, int N>
bool closerByChannels(const Color<T, N> &a, const Color<T, N> &b, const Color<T, N> &target) {
    for (int k = 0; k <= N; ++k) {
        const auto da = std::abs(a[k] - target[k]);
        const auto db = std::abs(b[k] - target[k]);
        if (da < db) return true;
        if (db < da) return false;
    }
    return false;
}

}  // namespace ColorUtilities
