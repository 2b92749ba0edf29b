#pragma once

#include <gif_lib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "gif_export/ErrorLimitTable.h"

namespace GifExport {

// Floyd-Steinberg diffusion for the export's reducer: rows bottom to top,
// serpentine, each error limited by ErrorLimitTable, and nearest colours
// cached per 6-bit cell, so colours that share a cell share the index found
// for the first of them. `Tree` answers nearest(rgb) with a palette number.
template <class Tree>
class SerpentineDiffusion {
public:
    // Takes all its memory here, so that a failure leaves nothing half done.
    SerpentineDiffusion(const Tree &tree, const std::vector<GifColorType> &palette,
                        std::uint32_t width)
        : tree_(tree),
          palette_(palette),
          width_(width),
          limit_(static_cast<std::uint32_t>(palette.size())),
          cache_(kCacheSize, -1),
          current_((std::size_t(width) + 2) * 3, 0),
          next_((std::size_t(width) + 2) * 3, 0) {}

    void run(const std::uint8_t *rgb, std::uint32_t height, std::uint8_t *indices) {
        for (std::uint32_t k = 0; k < height; ++k) {
            const std::size_t y = height - 1 - k;
            diffuseRow(rgb + y * width_ * 3, indices + y * width_, k % 2 == 0);
            std::swap(current_, next_);
            std::fill(next_.begin(), next_.end(), 0);
        }
    }

private:
    static constexpr std::size_t kCacheSize = std::size_t{1} << 18;

    std::uint32_t cachedNearest(const int *color) {
        const std::size_t key = std::size_t(color[0] >> 2) | std::size_t(color[1] >> 2) << 6 |
                                std::size_t(color[2] >> 2) << 12;
        std::int32_t &entry = cache_[key];
        if (entry < 0) entry = static_cast<std::int32_t>(tree_.nearest(color));
        return static_cast<std::uint32_t>(entry);
    }

    void diffuseRow(const std::uint8_t *row, std::uint8_t *out, bool leftToRight) {
        const std::ptrdiff_t direction = leftToRight ? 1 : -1;
        for (std::uint32_t i = 0; i < width_; ++i) {
            const std::size_t x = leftToRight ? i : width_ - 1 - i;
            std::int32_t *here = &current_[(x + 1) * 3];
            int color[3];
            for (int c = 0; c < 3; ++c) {
                color[c] = std::clamp(row[x * 3 + c] + limit_((here[c] + 8) / 16), 0, 255);
                here[c] = 0;
            }
            const std::uint32_t index = cachedNearest(color);
            out[x] = static_cast<std::uint8_t>(index);
            const GifColorType &chosen = palette_[index];
            const int error[3] = {color[0] - chosen.Red, color[1] - chosen.Green,
                                  color[2] - chosen.Blue};
            std::int32_t *ahead = here + 3 * direction;
            std::int32_t *below = &next_[(x + 1) * 3];
            std::int32_t *belowBehind = below - 3 * direction;
            std::int32_t *belowAhead = below + 3 * direction;
            for (int c = 0; c < 3; ++c) {
                ahead[c] += 7 * error[c];
                belowBehind[c] += 3 * error[c];
                below[c] += 5 * error[c];
                belowAhead[c] += error[c];
            }
        }
    }

    const Tree &tree_;
    const std::vector<GifColorType> &palette_;
    std::uint32_t width_;
    ErrorLimitTable limit_;
    std::vector<std::int32_t> cache_;
    // Sixteen times the error, three channels per cell, one cell of margin on
    // either side of the row.
    std::vector<std::int32_t> current_;
    std::vector<std::int32_t> next_;
};

}  // namespace GifExport
