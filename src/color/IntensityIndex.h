#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "color/Palette.h"

namespace ColorUtilities {

// The channels' sum in float over the channel count: the key of the
// intensity-sorted search.
template <typename T, int N>
double meanIntensity(const Color<T, N> &color) {
    float sum = 0.0f;
    for (int k = 0; k <= N; ++k) sum += static_cast<float>(color[k]);
    return sum / static_cast<double>(N + 1);
}

// Orders the palette by ascending mean intensity, once; this renumbers it for
// every holder. Equal means keep whatever order the sort leaves. A NaN mean
// goes last: `<` alone is no ordering with NaN, and the sort would be free to
// run off the ends of the palette.
template <typename T, int N>
void sortByIntensity(Palette<T, N> &palette) {
    if (palette.sorted) return;
    std::sort(palette.colors.begin(), palette.colors.end(),
              [](const Color<T, N> &a, const Color<T, N> &b) {
                  const double ma = meanIntensity(a), mb = meanIntensity(b);
                  if (std::isnan(ma)) return false;
                  return std::isnan(mb) || ma < mb;
              });
    palette.sorted = true;
}

// For each intensity 0..255, the position in an intensity-sorted palette of
// the colour whose mean is nearest: where the sorted search starts. Real
// samples are not rescaled, so only values on the 0..255 scale find useful
// starts.
class IntensityIndex {
public:
    template <typename T, int N>
    void build(const Palette<T, N> &palette) {
        entries_.fill(0);
        const std::size_t size = palette.size();
        if (size < 2) return;
        std::uint32_t p = 0;
        for (std::uint32_t v = 0; v < entries_.size(); ++v) {
            while (p < size - 1 &&
                   v >= (meanIntensity(palette.colors[p]) + meanIntensity(palette.colors[p + 1])) /
                            2)
                ++p;
            entries_[v] = p;
        }
    }

    // Means that round outside 0..255 have no entry.
    std::uint32_t startFor(double mean) const {
        const double key = std::round(mean);
        if (!(key >= 0.0 && key < static_cast<double>(entries_.size())))
            throw std::out_of_range("invalid array<T, N> subscript");
        return entries_[static_cast<std::size_t>(key)];
    }

    const std::array<std::uint32_t, 256> &entries() const noexcept { return entries_; }

private:
    std::array<std::uint32_t, 256> entries_{};
};

}  // namespace ColorUtilities
