#pragma once

#include "quorbel/QuorbelLibrary.h"
#include "refhost/refhost.hpp"

#include <optional>
#include <string>

namespace tarvex_cli {

// The arguments that the quantization exports share.
struct QuantizeSettings {
    long long colors = 256;
    long long method = 2;  // 1 median cut, 2 Wu, 3 octree
    std::string dither = "FloydSteinberg";
    std::optional<long long> bits;  // none: what bitsFor gives
};

// --bits when none is given: 6, but 5 for Wu on four channels, whose table
// at 6 bits takes 860 MB for any picture.
long long bitsFor(MImage image, const QuantizeSettings &settings);

// GetQuantizedImage's answer, which is the input image itself when it has no
// more colours than asked for; only a new image is owned here.
struct QuantizedImage {
    MImage image = nullptr;
    bool unchanged = false;
    rh::Image owned;
};

QuantizedImage quantizedImage(MImage image, const QuantizeSettings &settings);

// Whether GetQuantizedImage answers with the image itself, by its own rule:
// no more pixels, or no more distinct colours, than colours asked for.
bool quantizingKeeps(MImage image, long long colors);

// The image GetQuantizedImage makes from the palette and the indices that
// ImageQuantize gives for the same settings: each pixel's palette colour, in
// a new image of the input's shape, type and colour space; the caller frees it.
MImage paletteAtIndices(MImage image, MRawArray palette, MRawArray indices);

// ImageQuantize: the palette, or every pixel's index; the caller frees it.
MRawArray quantizeImage(MImage image, const QuantizeSettings &settings, bool paletteOnly);

// DitherImage against a colour map of the image's type, without the
// sorted-search and cache flags; the caller frees the result.
MImage ditherImage(MImage image, MRawArray colorMap, const std::string &method);

// UniqueColors.
long long uniqueColors(MImage image, bool ordered);

}  // namespace tarvex_cli
