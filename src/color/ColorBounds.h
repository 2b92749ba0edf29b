#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "color/SampleTraits.h"

namespace ColorUtilities {

// The per-channel value box of an image and how it is cut into 2^bits cells
// per channel, numbered from lo.
template <typename T, int N>
struct ColorBounds {
    std::uint32_t lo = 0;
    std::uint32_t hi = 0;
    std::uint32_t bits = 0;  // only the shift-based cells of 8- and 16-bit samples read it
    std::array<double, N + 1> cellWidth{};
    std::array<T, N + 1> max{};
    std::array<T, N + 1> min{};

    void setCells(std::uint32_t firstCell, std::uint32_t cellBits) {
        lo = firstCell;
        hi = (std::uint32_t{1} << cellBits) + firstCell;
        bits = cellBits;
    }

    // Integer types: the whole range of the type. Real types: the range of the
    // given samples, scanned from the given start values.
    void setRange(const T *pixels, std::size_t pixelCount, T startMax, T startMin) {
        if constexpr (SampleTraits<T>::kFixedRange) {
            max.fill(SampleTraits<T>::kMax);
            min.fill(T{0});
        } else {
            scanRange(pixels, pixelCount, startMax, startMin);
        }
        updateCellWidths();
    }

    // The box of one slice of a dithered image. Real slices start their scan
    // from the float limits, whatever the element type.
    void fillForSlice(std::uint32_t cellBits, const T *pixels, std::size_t pixelCount) {
        setCells(0, cellBits);
        if constexpr (SampleTraits<T>::kFixedRange) {
            setRange(pixels, pixelCount, T{}, T{});
        } else {
            constexpr T kFloatMax = static_cast<T>(std::numeric_limits<float>::max());
            setRange(pixels, pixelCount, -kFloatMax, kFloatMax);
        }
    }

    // The box a quantizer analyses, over all of its pixels.
    void fillForQuantizer(std::uint32_t firstCell, std::uint32_t cellBits, const T *pixels,
                          std::size_t pixelCount) {
        setCells(firstCell, cellBits);
        setRange(pixels, pixelCount, std::numeric_limits<T>::lowest(),
                 std::numeric_limits<T>::max());
    }

    // The difference is taken in the element type (single precision for
    // float) before the division in double.
    void updateCellWidths() {
        const double cells = static_cast<double>(hi - lo);
        for (int k = 0; k <= N; ++k) cellWidth[k] = static_cast<double>(max[k] - min[k]) / cells;
    }

private:
    // NaN samples never compare greater or less, so they never widen the box.
    void scanRange(const T *pixels, std::size_t pixelCount, T startMax, T startMin) {
        max.fill(startMax);
        min.fill(startMin);
        for (std::size_t i = 0; i < pixelCount; ++i) {
            const T *pixel = pixels + i * static_cast<std::size_t>(N + 1);
            for (int k = 0; k <= N; ++k) {
                if (pixel[k] > max[k]) max[k] = pixel[k];
                if (pixel[k] < min[k]) min[k] = pixel[k];
            }
        }
    }
};

}  // namespace ColorUtilities
