#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gif_import/PackedColor.h"
#include "gif_import/Raster.h"

namespace GifImport {

// What becomes of the canvas after a frame. Values the format does not
// define are stored as Unspecified, which keeps the frame like Keep.
enum Disposal : std::uint32_t { Unspecified = 0, Keep = 1, RestoreBackground = 2, RestorePrevious = 3 };

// One usable image of a decoded file. Its composited picture is not kept: the
// decoder's compositor draws it when a frame reader asks.
class Frame {
public:
    Frame(std::uint32_t height, std::uint32_t width, std::uint32_t top, std::uint32_t left)
        : height(height), width(width), top(top), left(left) {}
    virtual ~Frame() = default;

    bool hasTransparentIndex() const { return transparentIndex >= 0; }

    // A frame that does not cover the canvas lets earlier frames or the
    // transparent background show through, so it needs alpha as well.
    bool needsAlpha(std::uint64_t canvasPixelCount) const {
        return hasTransparentIndex() || raster.size() < canvasPixelCount;
    }
    int channels(std::uint64_t canvasPixelCount) const {
        return needsAlpha(canvasPixelCount) ? 4 : 3;
    }

    Palette localPalette;
    Raster raster;
    std::int32_t transparentIndex = -2;
    std::uint8_t userInputFlag = 0;
    std::uint32_t delayMilliseconds = 0;
    std::uint32_t height;
    std::uint32_t width;
    std::uint32_t top;
    std::uint32_t left;
    Disposal disposal = Unspecified;
    std::vector<std::string> comments;
};

}  // namespace GifImport
