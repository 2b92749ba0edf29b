#pragma once

#include <cstdint>
#include <vector>

namespace GifExport {

// Rows in the order an interlaced GIF stores them: every 8th from 0, every
// 8th from 4, every 4th from 2, every 2nd from 1.
inline std::vector<std::uint32_t> interlacedRowOrder(std::uint32_t height) {
    constexpr std::uint32_t kStarts[] = {0, 4, 2, 1};
    constexpr std::uint32_t kSteps[] = {8, 8, 4, 2};
    std::vector<std::uint32_t> rows;
    rows.reserve(height);
    for (int pass = 0; pass < 4; ++pass)
        for (std::uint64_t y = kStarts[pass]; y < height; y += kSteps[pass])
            rows.push_back(static_cast<std::uint32_t>(y));
    return rows;
}

}  // namespace GifExport
