// Deterministic images and palettes for every element type. Real samples
// spill a little outside 0..1 and their range grows with the slice, so that
// each slice has its own bounds.
#pragma once

#include <cstdint>
#include <vector>

#include "DitherCall.h"

namespace dither_test {

template <typename T>
T randomSample(Random &random, int slice) {
    if constexpr (std::is_same_v<T, signed char>)
        return static_cast<T>(random.below(2));
    else if constexpr (std::is_same_v<T, unsigned char>)
        return static_cast<T>(random.below(256));
    else if constexpr (std::is_same_v<T, unsigned short>)
        return static_cast<T>(random.below(65536));
    else
        return static_cast<T>((random.uniform() * 1.4 - 0.2) * (1 + slice));
}

template <typename T>
std::vector<T> randomImageSamples(Random &random, const ImageShape &shape) {
    const int slices = shape.slices > 0 ? static_cast<int>(shape.slices) : 1;
    const std::size_t perSlice =
        static_cast<std::size_t>(shape.width * shape.height * shape.channels);
    std::vector<T> samples;
    samples.reserve(perSlice * slices);
    for (int s = 0; s < slices; ++s)
        for (std::size_t i = 0; i < perSlice; ++i) samples.push_back(randomSample<T>(random, s));
    return samples;
}

template <typename T>
std::vector<T> randomPaletteSamples(Random &random, int colors, int channels) {
    std::vector<T> samples;
    for (int i = 0; i < colors * channels; ++i) samples.push_back(randomSample<T>(random, 0));
    return samples;
}

inline std::uint64_t fnv1a(const void *data, std::size_t size) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    const auto *bytes = static_cast<const unsigned char *>(data);
    for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001b3ULL;
    return hash;
}

}  // namespace dither_test
