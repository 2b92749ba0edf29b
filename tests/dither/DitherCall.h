// Calling DitherImage in the reference host, on deterministic inputs for
// every element type.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "ForEachInstantiation.h"
#include "Plugin.h"
#include "refhost/refhost.hpp"
#include "host/ElementTypes.h"

namespace dither_test {

inline QuorbelImageFunctions images() { return rh_library_data(RH_TABLE_FULL)->imageFunctions; }
inline QuorbelRawArrayFunctions rawArrays() {
    return rh_library_data(RH_TABLE_FULL)->rawArrayFunctions;
}

struct ImageShape {
    mint slices;  // 0 or less: a 2-D image
    mint width;
    mint height;
    mint channels;
};

template <typename T>
MImage newImage(const ImageShape &shape, const std::vector<T> &samples) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(shape.slices, shape.width, shape.height, shape.channels,
                           OstrelUtils::ElementType<T>::kImageType, MImage_CS_Automatic, 1, 0,
                           &image),
              0);
    if (image != nullptr && !samples.empty())
        std::memcpy(images()->getRawData(image), samples.data(), samples.size() * sizeof(T));
    return image;
}

template <typename T>
MRawArray newRawArray(const std::vector<mint> &dimensions, const std::vector<T> &elements) {
    MRawArray array = nullptr;
    EXPECT_EQ(rh_raw_array_new(OstrelUtils::ElementType<T>::kRawArrayType,
                               static_cast<mint>(dimensions.size()), dimensions.data(), &array),
              0);
    if (array != nullptr && !elements.empty())
        std::memcpy(rawArrays()->getData(array), elements.data(), elements.size() * sizeof(T));
    return array;
}

template <typename T>
std::vector<T> samplesOf(MImage image) {
    const auto *data = static_cast<const T *>(images()->getRawData(image));
    const mint count = images()->getSliceCount(image) * images()->getRowCount(image) *
                       images()->getColumnCount(image) * images()->getChannels(image);
    return std::vector<T>(data, data + count);
}

struct DitherArguments {
    MImage image;
    MRawArray colorMap;
    std::string method = "None";
    bool cacheFlag = false;
    bool sortedFlag = false;
};

// The export's code; the dithered image, when written, goes to *result.
inline int callDitherImage(const DitherArguments &a, MImage *result, mint argc = 5) {
    const RhValue args[5] = {
        RhValue{RH_IMAGE, {.image = a.image}, 0},
        RhValue{RH_RAW_ARRAY, {.rawArray = a.colorMap}, 0},
        RhValue{RH_STRING, {.string = a.method.c_str()}, 0},
        RhValue{RH_BOOLEAN, {.boolean = a.cacheFlag}, 0},
        RhValue{RH_BOOLEAN, {.boolean = a.sortedFlag}, 0},
    };
    RhValue answer{RH_IMAGE, {}, 0};
    const int code = rh_call(tarvex_test::plugin(), "DitherImage", argc, args, &answer);
    *result = answer.written ? answer.value.image : nullptr;
    return code;
}

using tarvex_test::forEachInstantiation;

// Deterministic pseudo-random numbers (splitmix64).
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    // In [0, 1).
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(next() % bound); }

private:
    std::uint64_t state_;
};

// Samples over the whole range of the integer types. Real samples spill a
// little outside 0..1 and their range grows with the slice, so that each
// slice has its own bounds. A colour map is an image of one row.
template <typename T>
std::vector<T> randomSamples(Random &random, const ImageShape &shape) {
    std::vector<T> samples;
    const auto perSlice = static_cast<std::size_t>(shape.width * shape.height * shape.channels);
    for (mint s = 0; s < std::max<mint>(shape.slices, 1); ++s)
        for (std::size_t i = 0; i < perSlice; ++i) {
            if constexpr (std::is_floating_point_v<T>)
                samples.push_back(static_cast<T>((random.uniform() * 1.4 - 0.2) * double(1 + s)));
            else if constexpr (std::is_same_v<T, signed char>)
                samples.push_back(static_cast<T>(random.below(2)));
            else
                samples.push_back(static_cast<T>(random.below(std::uint32_t{1} << (8 * sizeof(T)))));
        }
    return samples;
}

template <typename T>
std::vector<T> randomColorMap(Random &random, int colors, int channels) {
    return randomSamples<T>(random, {0, colors, 1, channels});
}

}  // namespace dither_test
