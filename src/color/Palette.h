#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "color/Color.h"
#include "host/RawArray.h"

namespace ColorUtilities {

// No palette index: what a search cache holds where it knows no answer yet.
inline constexpr std::uint32_t kUnknownIndex = 0xFFFFFFFF;

// The colours an image is mapped to; a colour's position is its index. Always
// held through a shared pointer, since a quantizer and the ditherer built from
// it map to the same list.
template <typename T, int N>
class Palette {
public:
    explicit Palette(std::size_t colorCount) {
        if (colorCount > 0) colors.reserve(colorCount);
    }

    std::size_t size() const noexcept { return colors.size(); }

    // Index overruns are out-of-range errors, not runtime errors: the dither
    // export reports the two kinds with different codes.
    [[gnu::always_inline]] const Color<T, N> &at(std::size_t index) const {
        if (index >= colors.size()) throw std::out_of_range("invalid vector<T> subscript");
        return colors[index];
    }

    std::vector<Color<T, N>> colors;
    // Set once the colours are ordered by mean intensity (which renumbers them).
    bool sorted = false;
};

template <typename T, int N>
using SharedPalette = std::shared_ptr<Palette<T, N>>;

// A palette from a colours x channels raw array, taken as it stands.
template <typename T, int N>
SharedPalette<T, N> fromColorMap(const OstrelUtils::RawArray<T> &colorMap) {
    if (colorMap.rank() != 2)
        throw std::runtime_error("Color map should be a 2-dimensional raw array");
    if (colorMap.dimensions()[1] != N + 1)
        throw std::runtime_error(
            "Colors in color map should have the same number of channels as image colors");
    const auto count = static_cast<std::size_t>(colorMap.dimensions()[0]);
    auto palette = std::make_shared<Palette<T, N>>(count);
    const T *samples = colorMap.data();
    for (std::size_t i = 0; i < count; ++i)
        palette->colors.emplace_back(samples + i * static_cast<std::size_t>(N + 1));
    return palette;
}

}  // namespace ColorUtilities
