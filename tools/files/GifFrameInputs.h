#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// GIF pixels are either shown or not: below half opacity counts as not.
constexpr std::uint8_t kLeastShownAlpha = 128;

// One input of a GIF file: a PNG or JPEG picture (one frame) or a GIF file
// (its composited frames).
struct FrameInput {
    std::string path;  // readable: standard input's copy for "-"
    bool gif = false;
    long frames = 1;
    bool alpha = false;  // some pixel of its pictures is transparent
};

// Every frame of the inputs, learnt from headers and GIF metadata before any
// frame is decoded, so that all of them can be held once, in one place.
struct FramePlan {
    std::vector<FrameInput> inputs;
    mint width = 0, height = 0;
    mint channels = 0;   // 1 when every input is grey, else 3
    bool alpha = false;  // some picture has transparent pixels

    mint count() const;
};

// Throws CliError for an input that cannot be read, has another size than
// the ones before it, or has other than 8-bit samples.
FramePlan planFrames(const std::vector<std::string> &arguments);

// Refuses frames that, at `bytesPerPixel`, would take more than the memory
// budget, naming the input with which they pass it.
void checkFramesFit(const FramePlan &plan, int bytesPerPixel);

// One decoded frame of the plan's size: 8-bit interleaved samples, grey or
// RGB, and with `alpha` a last alpha channel. The alpha of an input that
// shows no transparent pixel is still there but is ignored.
struct FramePixels {
    const std::uint8_t *samples = nullptr;
    int colorChannels = 3;
    bool alpha = false;
    bool alphaIgnored = false;

    int stride() const { return colorChannels + (alpha ? 1 : 0); }
    bool transparent(std::size_t pixel) const {
        return alpha && !alphaIgnored && samples[pixel * stride() + stride() - 1] < kLeastShownAlpha;
    }
    bool anyTransparent(std::size_t pixels) const;
    std::uint32_t rgb(std::size_t pixel) const;  // packed 0xRRGGBB
};

// Three 8-bit samples as 0xRRGGBB.
inline std::uint32_t packedRgb(const std::uint8_t *rgb) {
    return std::uint32_t(rgb[0]) << 16 | std::uint32_t(rgb[1]) << 8 | rgb[2];
}

// Decodes the frames in order and hands each to `take` with its number from
// 0, showing progress by input.
void forEachFrame(const FramePlan &plan, const std::function<void(mint, const FramePixels &)> &take);

// A new interleaved host image with one slice per frame, grey or RGB as the
// plan says, each frame decoded straight into its slice; any alpha is
// dropped. The caller frees it.
MImage frameImage(const FramePlan &plan);

}  // namespace tarvex_cli
