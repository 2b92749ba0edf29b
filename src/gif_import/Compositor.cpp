#include "gif_import/Compositor.h"

namespace GifImport {
namespace {

enum Disposal : std::uint32_t { Unspecified = 0, Keep = 1, RestoreBackground = 2, RestorePrevious = 3 };

void fillRectangle(const Frame &frame, std::vector<PackedColor> &canvas, PackedColor color,
                   std::uint32_t canvasWidth) {
    for (std::uint32_t r = 0; r < frame.height; ++r)
        for (std::uint32_t c = 0; c < frame.width; ++c)
            canvas.at(std::size_t{frame.top + r} * canvasWidth + frame.left + c) = color;
}

}  // namespace

Palette drawingPalette(const Frame &frame, const Palette &globalPalette) {
    if (!frame.localPalette.empty()) return frame.localPalette;
    Palette palette = globalPalette;
    if (frame.hasTransparentIndex() &&
        static_cast<std::size_t>(frame.transparentIndex) < palette.size())
        palette[frame.transparentIndex] = withAlpha(palette[frame.transparentIndex], 0);
    return palette;
}

void drawFrame(const Frame &frame, const Palette &palette, std::vector<PackedColor> &picture,
               std::uint32_t canvasWidth) {
    for (std::uint32_t r = 0; r < frame.height; ++r) {
        for (std::uint32_t c = 0; c < frame.width; ++c) {
            const std::uint8_t index = frame.raster[std::size_t{r} * frame.width + c];
            if (index >= palette.size()) continue;
            PackedColor &target = picture.at(std::size_t{frame.top + r} * canvasWidth + frame.left + c);
            const PackedColor source = palette[index];
            if (alpha(source) != 0 || alpha(target) == 0) target = source;
        }
    }
}

void applyDisposal(Frame &frame, std::vector<PackedColor> &canvas, PackedColor background,
                   std::uint32_t canvasWidth) {
    switch (frame.disposal) {
    case Keep:
        canvas = frame.picture;
        break;
    case RestoreBackground:
        fillRectangle(frame, canvas, background, canvasWidth);
        break;
    case RestorePrevious:
        break;
    default:
        frame.disposal = Unspecified;
        canvas = frame.picture;
        break;
    }
}

}  // namespace GifImport
