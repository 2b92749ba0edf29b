#pragma once

#include <array>
#include <cstdint>

namespace GifExport {

// How much of a diffused error reaches a pixel: all of a small error, half of
// the rise of a middling one, nothing more beyond. The fewer the colours, the
// larger the error let through. The constant tail takes the value the half
// slope reaches at its end, so it rises once more after an even last step.
class ErrorLimitTable {
public:
    explicit ErrorLimitTable(std::uint32_t colorCount) {
        const int step = colorCount > 15 ? static_cast<int>(colorCount >> 4) : 1;
        const int slopeOneEnd = 256 / step;
        const int halfSlopeEnd = step > 3 ? 768 / step : slopeOneEnd;
        int limit = 0;
        for (int e = 0; e < 256; ++e) {
            if (e < slopeOneEnd)
                limit = e;
            else if (e == slopeOneEnd)
                limit = slopeOneEnd;
            else if (e <= halfSlopeEnd && (e - 1) % 2 == 0)
                ++limit;
            limits_[255 + e] = limit;
            limits_[255 - e] = -limit;
        }
    }

    // `error` in -255..255.
    int operator()(int error) const noexcept { return limits_[static_cast<std::size_t>(error + 255)]; }

private:
    std::array<int, 511> limits_{};
};

}  // namespace GifExport
