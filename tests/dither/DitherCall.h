// Building DitherImage's arguments in the reference host and calling it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Plugin.h"

namespace dither_test {

template <typename T>
struct HostTypes;
template <>
struct HostTypes<signed char> {
    static constexpr MImage_Data_Type kImage = MImage_Type_Bit;
    static constexpr MRawArray_Data_Type kRaw = MRawArray_Type_Bit8;
};
template <>
struct HostTypes<unsigned char> {
    static constexpr MImage_Data_Type kImage = MImage_Type_Bit8;
    static constexpr MRawArray_Data_Type kRaw = MRawArray_Type_UBit8;
};
template <>
struct HostTypes<unsigned short> {
    static constexpr MImage_Data_Type kImage = MImage_Type_Bit16;
    static constexpr MRawArray_Data_Type kRaw = MRawArray_Type_UBit16;
};
template <>
struct HostTypes<float> {
    static constexpr MImage_Data_Type kImage = MImage_Type_Real32;
    static constexpr MRawArray_Data_Type kRaw = MRawArray_Type_Real32;
};
template <>
struct HostTypes<double> {
    static constexpr MImage_Data_Type kImage = MImage_Type_Real64;
    static constexpr MRawArray_Data_Type kRaw = MRawArray_Type_Real64;
};

inline QuorbelImageFunctions images() { return rh_library_data(RH_TABLE_FULL)->imageFunctions; }
inline QuorbelRawArrayFunctions rawArrays() {
    return rh_library_data(RH_TABLE_FULL)->rawArrayFunctions;
}

// Host objects freed at the end of a test's scope.
struct OwnedImage {
    MImage handle = nullptr;
    OwnedImage() = default;
    explicit OwnedImage(MImage h) : handle(h) {}
    OwnedImage(const OwnedImage &) = delete;
    OwnedImage &operator=(const OwnedImage &) = delete;
    ~OwnedImage() {
        if (handle != nullptr) images()->free(handle);
    }
};

struct OwnedRawArray {
    MRawArray handle = nullptr;
    explicit OwnedRawArray(MRawArray h) : handle(h) {}
    OwnedRawArray(const OwnedRawArray &) = delete;
    OwnedRawArray &operator=(const OwnedRawArray &) = delete;
    ~OwnedRawArray() {
        if (handle != nullptr) rawArrays()->free(handle);
    }
};

struct ImageShape {
    mint slices;  // 0 or less: a 2-D image
    mint width;
    mint height;
    mint channels;
};

template <typename T>
MImage newImage(const ImageShape &shape, const std::vector<T> &samples,
                MImage_CS_Type colorSpace = MImage_CS_Automatic, bool interleaved = true) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(shape.slices, shape.width, shape.height, shape.channels,
                           HostTypes<T>::kImage, colorSpace, interleaved, 0, &image),
              0);
    if (image != nullptr && !samples.empty())
        std::memcpy(images()->getRawData(image), samples.data(), samples.size() * sizeof(T));
    return image;
}

template <typename T>
MRawArray newRawArray(const std::vector<mint> &dimensions, const std::vector<T> &elements,
                      MRawArray_Data_Type type = HostTypes<T>::kRaw) {
    MRawArray array = nullptr;
    EXPECT_EQ(
        rawArrays()->create(type, static_cast<mint>(dimensions.size()), dimensions.data(), &array),
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

// Runs f.template operator()<T, N>() for the twenty instantiations.
template <typename F>
void forEachInstantiation(F &&f) {
    const auto channels = [&]<typename T>() {
        f.template operator()<T, 0>();
        f.template operator()<T, 1>();
        f.template operator()<T, 2>();
        f.template operator()<T, 3>();
    };
    channels.template operator()<signed char>();
    channels.template operator()<unsigned char>();
    channels.template operator()<unsigned short>();
    channels.template operator()<float>();
    channels.template operator()<double>();
}

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

}  // namespace dither_test
