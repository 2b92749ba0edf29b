#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// Frames for a GIF file, all of one size: 8-bit samples, grey (1 channel) or
// RGB (3), frame after frame.
struct FrameSequence {
    mint width = 0, height = 0, channels = 0;
    std::vector<std::uint8_t> samples;

    mint count() const {
        return width * height * channels == 0 ? 0 : mint(samples.size()) / (width * height * channels);
    }
    void promoteToRgb();
};

// Appends the frames of one input: a PNG file (one frame) or a GIF file (its
// composited frames). Throws CliError for a file of another size, one with
// alpha, or one that cannot be read.
void appendFrames(FrameSequence &frames, const std::string &path);

// A new interleaved host image with one slice per frame; the caller frees it.
MImage frameImage(const FrameSequence &frames);

}  // namespace tarvex_cli
