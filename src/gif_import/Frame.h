#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gif_import/PackedColor.h"

namespace GifImport {

// One usable image of a decoded file, with the full-canvas picture that a
// viewer shows at that point of the animation.
class Frame {
public:
    Frame(std::uint32_t height, std::uint32_t width, std::uint32_t top, std::uint32_t left)
        : height(height), width(width), top(top), left(left) {}
    virtual ~Frame() = default;

    bool hasTransparentIndex() const { return transparentIndex >= 0; }

    // A frame that does not cover the canvas lets earlier frames or the
    // transparent background show through, so it needs alpha as well.
    bool needsAlpha(std::uint32_t canvasPixelCount) const {
        return hasTransparentIndex() || raster.size() < canvasPixelCount;
    }
    int channels(std::uint32_t canvasPixelCount) const {
        return needsAlpha(canvasPixelCount) ? 4 : 3;
    }

    std::vector<PackedColor> picture;
    Palette localPalette;
    std::vector<std::uint8_t> raster;
    std::int32_t transparentIndex = -2;
    std::uint8_t userInputFlag = 0;
    std::uint32_t delayMilliseconds = 0;
    std::uint32_t height;
    std::uint32_t width;
    std::uint32_t top;
    std::uint32_t left;
    std::uint32_t disposal = 0;
    std::vector<std::string> comments;
};

}  // namespace GifImport
