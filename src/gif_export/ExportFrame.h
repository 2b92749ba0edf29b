#pragma once

#include <gif_lib.h>

#include <cstdint>
#include <vector>

#include "gif_export/ColorMap.h"

namespace GifExport {

// Transparent index states before the colour is looked up in the frame's map.
inline constexpr int kTransparencyToResolve = -2;
inline constexpr int kNoTransparency = -1;

// One image of the file being written. Frames always cover the whole screen.
struct ExportFrame {
    std::vector<std::uint8_t> pixels;          // indices, rows top to bottom
    const std::uint8_t *externalPixels = nullptr;  // used instead of `pixels` when set
    int transparentIndex = kTransparencyToResolve;
    GifColorType transparentColor{0, 0, 0};
    int userInput = 0;
    int delay = 0;  // hundredths of a second
    int disposal = DISPOSAL_UNSPECIFIED;
    std::uint32_t height = 0;
    std::uint32_t width = 0;
    ColorMapOwner ownedMap;                    // the local map, when this frame owns it
    ColorMapObject *localMap = nullptr;

    const std::uint8_t *row(std::uint32_t y) const {
        return (externalPixels != nullptr ? externalPixels : pixels.data()) +
               std::size_t(y) * width;
    }
    void ownMap(ColorMapOwner map) {
        localMap = map.get();
        ownedMap = std::move(map);
    }
};

}  // namespace GifExport
