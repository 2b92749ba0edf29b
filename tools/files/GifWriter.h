#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// What a GIF file says besides its pixels, as the plug-in's writers take it.
struct GifSettings {
    std::vector<double> delays{0.1};  // seconds: one for all frames, or one per frame
    long loops = 0;                   // plays; 0 for forever
    std::string dither = "FloydSteinberg";
    bool interlace = false;
    std::vector<std::string> comments;
    std::vector<double> background;   // {}, a grey level or r, g, b
    std::vector<double> transparent;  // likewise
    std::vector<double> disposals{0};
};

// Frames that are already colour indices into one map of 8-bit RGB colours.
struct IndexedFrames {
    std::vector<std::uint8_t> mapRgb;  // 3 bytes a colour, 1 to 256 colours
    std::vector<std::uint8_t> indices;  // frames x height x width
    mint frames = 1, height = 0, width = 0;
};

// WriteColormaps: the frames with their map, which is padded to a power of
// two as GIF maps are.
void writeIndexedGif(const IndexedFrames &frames, const GifSettings &settings, const std::string &path);

// A new array for the indices of `frames` frames; the caller frees it.
MRawArray newFrameIndices(mint frames, mint height, mint width);

// WriteColormaps with `indices` from newFrameIndices and `maps` maps of
// equally many colours in `mapRgb`: one for every frame, or one per frame.
void writeIndexedGif(const std::vector<std::uint8_t> &mapRgb, mint maps, MRawArray indices,
                     const GifSettings &settings, const std::string &path);

// WriteFrames: an 8-bit image, grey or RGB, one slice a frame.
void writeImageGif(MImage image, const GifSettings &settings, const std::string &path);

// An 8-bit grey or RGB image as indices into the map of its distinct colours,
// in order of first appearance. Throws CliError past 256 colours.
IndexedFrames indexedFramesOf(MImage image, const std::string &path);

}  // namespace tarvex_cli
