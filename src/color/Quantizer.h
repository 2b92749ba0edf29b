#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "color/ColorBounds.h"
#include "color/Palette.h"

namespace Quant {

// A colour-reduction method: analyses the pixels once and appends the colours
// it chooses to the palette, which the ditherer built from it then shares.
template <typename T, int N>
class Quantizer {
public:
    Quantizer(const Quantizer &) = delete;
    Quantizer &operator=(const Quantizer &) = delete;
    virtual ~Quantizer() = default;

    virtual void quantize() = 0;
    // Clears the method's working state without freeing it.
    virtual void reset() = 0;

    std::uint8_t bits() const noexcept { return bits_; }
    std::uint32_t pixelCount() const noexcept { return pixelCount_; }
    const T *pixels() const noexcept { return pixels_; }
    std::uint32_t maxColors() const noexcept { return maxColors_; }
    const ColorUtilities::SharedPalette<T, N> &palette() const noexcept { return palette_; }
    const ColorUtilities::ColorBounds<T, N> &bounds() const noexcept { return bounds_; }

protected:
    Quantizer(std::uint32_t pixelCount, const T *pixels, std::uint32_t maxColors)
        : pixelCount_(pixelCount),
          pixels_(pixels),
          maxColors_(maxColors),
          // No method makes more colours than there are pixels: room for
          // more would only take memory.
          palette_(std::make_shared<ColorUtilities::Palette<T, N>>(std::min(maxColors, pixelCount))) {}

    // Called by each method's constructor once it knows its precision; lo is
    // the method's first cell.
    void setPrecision(std::uint8_t bits, std::uint32_t firstCell) {
        bits_ = bits;
        bounds_.fillForQuantizer(firstCell, bits, pixels_, pixelCount_);
    }

    std::uint8_t bits_ = 0;
    std::uint32_t pixelCount_;
    const T *pixels_;  // not owned: the image's samples, read in place
    std::uint32_t maxColors_;
    ColorUtilities::SharedPalette<T, N> palette_;
    ColorUtilities::ColorBounds<T, N> bounds_;
};

}  // namespace Quant
