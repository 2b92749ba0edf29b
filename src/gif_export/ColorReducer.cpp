#include "gif_export/ColorReducer.h"

#include <cstddef>
#include <new>

#include "gif_export/SerpentineDiffusion.h"

namespace GifExport {
namespace {

// Very large frames classify every s-th row only, which keeps the 32-bit
// channel totals from overflowing. Rows are taken bottom first.
void classifyFrame(ExportOctree &tree, const std::uint8_t *rgb, std::uint32_t height,
                   std::uint32_t width) {
    const std::uint64_t pixels = std::uint64_t{height} * width;
    const std::uint64_t rowStep = (pixels >> 24) + 1;
    for (std::uint64_t k = 0; k < height; k += rowStep) {
        const std::uint8_t *row = rgb + std::size_t(height - 1 - k) * width * 3;
        for (std::uint32_t x = 0; x < width; ++x) tree.classify(row + std::size_t(x) * 3);
    }
}

void assignNearest(const ExportOctree &tree, const std::uint8_t *rgb, std::size_t pixels,
                   std::uint8_t *indices) {
    for (std::size_t i = 0; i < pixels; ++i) {
        const int color[3] = {rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]};
        indices[i] = static_cast<std::uint8_t>(tree.nearest(color));
    }
}

}  // namespace

ColorMapOwner reduceColors(const std::uint8_t *rgb, std::uint32_t height, std::uint32_t width,
                           std::uint8_t *indices, const ReduceSettings &settings) {
    ExportOctree tree(settings.tree);
    classifyFrame(tree, rgb, height, width);
    tree.reduce(settings.maxColors);
    const std::vector<GifColorType> palette = tree.buildPalette();
    ColorMapOwner map = makeColorMap(colorMapSizeFor(palette.size()), palette);

    bool dithered = false;
    if (settings.dither) {
        try {
            SerpentineDiffusion diffusion(tree, palette, width);
            diffusion.run(rgb, height, indices);
            dithered = true;
        } catch (const std::bad_alloc &) {
            // Without the memory for diffusion the frame is still written, undithered.
        }
    }
    if (!dithered) assignNearest(tree, rgb, std::size_t(height) * width, indices);
    return map;
}

}  // namespace GifExport
