#pragma once

#include <cstdint>

#include "gif_export/ColorMap.h"
#include "gif_export/ExportOctree.h"

namespace GifExport {

struct ReduceSettings {
    std::uint32_t maxColors = 256;
    ExportOctree::Limits tree;
    bool dither = true;
};

// Reduces one RGB frame (height x width x 3 bytes, rows top to bottom) to at
// most `maxColors` colours: writes one index per pixel into `indices` and
// returns the colour map, the smallest power of two that holds the palette.
ColorMapOwner reduceColors(const std::uint8_t *rgb, std::uint32_t height, std::uint32_t width,
                           std::uint8_t *indices, const ReduceSettings &settings);

}  // namespace GifExport
