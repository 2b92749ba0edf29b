#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "gif_export/ColorMap.h"
#include "gif_export/ExportOctree.h"
#include "gif_export/SerpentineDiffusion.h"

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

namespace detail {

// Very large frames classify every s-th row only, which keeps the 32-bit
// channel totals from overflowing. Rows are taken bottom first.
template <class Tree>
void classifyFrame(Tree &tree, const std::uint8_t *rgb, std::uint32_t height, std::uint32_t width) {
    const std::uint64_t pixels = std::uint64_t{height} * width;
    const std::uint64_t rowStep = (pixels >> 24) + 1;
    for (std::uint64_t k = 0; k < height; k += rowStep) {
        const std::uint8_t *row = rgb + std::size_t(height - 1 - k) * width * 3;
        for (std::uint32_t x = 0; x < width; ++x) tree.classify(row + std::size_t(x) * 3);
    }
}

// The nearest colour depends on the colour alone, so a direct-mapped memo
// keyed by the whole colour gives the same answers with fewer searches.
template <class Tree>
void assignNearest(const Tree &tree, const std::uint8_t *rgb, std::size_t pixels,
                   std::uint8_t *indices) {
    constexpr std::uint32_t kSlots = 1u << 16, kEmpty = 0xFFFFFFFFu;
    std::vector<std::uint32_t> keys(kSlots, kEmpty);
    std::vector<std::uint8_t> found(kSlots);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t *p = rgb + 3 * i;
        const std::uint32_t key = std::uint32_t(p[0]) << 16 | std::uint32_t(p[1]) << 8 | p[2];
        const std::uint32_t slot = (key * 0x9E3779B1u) >> 16;
        if (keys[slot] != key) {
            const int color[3] = {p[0], p[1], p[2]};
            keys[slot] = key;
            found[slot] = static_cast<std::uint8_t>(tree.nearest(color));
        }
        indices[i] = found[slot];
    }
}

}  // namespace detail

// The reducer over any tree with the operations of ExportOctree.
template <class Tree>
ColorMapOwner reduceColorsWith(const std::uint8_t *rgb, std::uint32_t height, std::uint32_t width,
                               std::uint8_t *indices, const ReduceSettings &settings) {
    Tree tree(settings.tree);
    detail::classifyFrame(tree, rgb, height, width);
    tree.reduce(settings.maxColors);
    const std::vector<GifColorType> palette = tree.buildPalette();
    ColorMapOwner map = makeColorMap(colorMapSizeFor(palette.size()), palette);
    if (settings.dither) {
        try {
            SerpentineDiffusion<Tree> diffusion(tree, palette, width);
            diffusion.run(rgb, height, indices);
            return map;
        } catch (const std::bad_alloc &) {
            // Without the memory for diffusion the frame is still written, undithered.
        }
    }
    detail::assignNearest(tree, rgb, std::size_t(height) * width, indices);
    return map;
}

}  // namespace GifExport
