#pragma once

#include "quorbel/QuorbelLibrary.h"
#include "refhost/refhost.hpp"

#include <string>

namespace tarvex_cli {

// The arguments that the quantization exports share.
struct QuantizeSettings {
    long long colors = 256;
    long long method = 2;  // 1 median cut, 2 Wu, 3 octree
    std::string dither = "FloydSteinberg";
    long long bits = 6;
};

// GetQuantizedImage's answer, which is the input image itself when it has no
// more colours than asked for; only a new image is owned here.
struct QuantizedImage {
    MImage image = nullptr;
    bool unchanged = false;
    rh::Image owned;
};

QuantizedImage quantizedImage(MImage image, const QuantizeSettings &settings);

// ImageQuantize: the palette, or every pixel's index; the caller frees it.
MRawArray quantizeImage(MImage image, const QuantizeSettings &settings, bool paletteOnly);

// DitherImage against a colour map of the image's type, without the
// sorted-search and cache flags; the caller frees the result.
MImage ditherImage(MImage image, MRawArray colorMap, const std::string &method);

// UniqueColors.
long long uniqueColors(MImage image, bool ordered);

}  // namespace tarvex_cli
