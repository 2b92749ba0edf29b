#pragma once

#include <gif_lib.h>

#include <cstdint>
#include <vector>

#include "gif_export/ErrorLimitTable.h"
#include "gif_export/ExportOctree.h"

namespace GifExport {

// Floyd-Steinberg diffusion for the export's reducer: rows bottom to top,
// serpentine, each error limited by ErrorLimitTable, and nearest colours
// cached per 6-bit cell, so colours that share a cell share the index found
// for the first of them.
class SerpentineDiffusion {
public:
    // Takes all its memory here, so that a failure leaves nothing half done.
    SerpentineDiffusion(const ExportOctree &tree, const std::vector<GifColorType> &palette,
                        std::uint32_t width);

    void run(const std::uint8_t *rgb, std::uint32_t height, std::uint8_t *indices);

private:
    static constexpr std::size_t kCacheSize = std::size_t{1} << 18;

    void diffuseRow(const std::uint8_t *row, std::uint8_t *out, bool leftToRight);
    std::uint32_t cachedNearest(const int *color);

    const ExportOctree &tree_;
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
