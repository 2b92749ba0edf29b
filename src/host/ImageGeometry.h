#pragma once

#include <cstdint>
#include <stdexcept>

#include "host/Image.h"

namespace OstrelUtils {

struct ImageGeometry {
    std::int64_t columns;
    std::int64_t rows;
    std::int64_t slices;
};

// Pixels are read as their channels side by side; planar samples are not.
inline void requireInterleaved(bool interleaved, std::int64_t channels) {
    if (!interleaved && channels > 1) throw std::runtime_error("Input image has to be interleaved");
}

// Refuses the images that the colour algorithms cannot read as packed pixels.
template <typename T>
ImageGeometry checkGeometry(const Image<T> &image) {
    const ImageGeometry geometry{image.columns(), image.rows(), image.slices()};
    requireInterleaved(image.interleaved(), image.channels());
    if (image.alphaChannel()) throw std::runtime_error("Input image must not have an alpha channel");
    if (geometry.slices < 1) throw std::runtime_error("Invalid number of frames");
    if (geometry.rows < 1 || geometry.columns < 1)
        throw std::runtime_error("Invalid image dimensions");
    return geometry;
}

}  // namespace OstrelUtils
