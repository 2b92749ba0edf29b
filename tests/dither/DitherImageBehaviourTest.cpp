// Properties of DitherImage's answers that hold whatever the pixels.
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "TestImages.h"

namespace {

using namespace dither_test;
using tarvex_test::HostBooksGuard;

template <typename T>
std::vector<T> dither(MImage image, MRawArray map, const char *method, bool flags = false) {
    MImage answer = nullptr;
    EXPECT_EQ(callDitherImage({image, map, method, flags, flags}, &answer), 0);
    OwnedImage result(answer);
    return answer != nullptr ? samplesOf<T>(answer) : std::vector<T>{};
}

// The cache and sorted-search flags are ignored for a given colour map.
TEST(DitherImageBehaviour, TheTwoFlagsChangeNothing) {
    HostBooksGuard guard;
    Random random(7);
    const ImageShape rgb{0, 31, 23, 3}, grey{2, 17, 9, 1};
    OwnedImage bytes(newImage<unsigned char>(rgb, randomImageSamples<unsigned char>(random, rgb)));
    OwnedRawArray byteMap(
        newRawArray<unsigned char>({9, 3}, randomPaletteSamples<unsigned char>(random, 9, 3)));
    OwnedImage reals(newImage<double>(grey, randomImageSamples<double>(random, grey)));
    OwnedRawArray realMap(newRawArray<double>({4, 1}, randomPaletteSamples<double>(random, 4, 1)));
    for (const char *method : {"None", "FloydSteinberg"}) {
        EXPECT_EQ(dither<unsigned char>(bytes.handle, byteMap.handle, method, true),
                  dither<unsigned char>(bytes.handle, byteMap.handle, method, false));
        EXPECT_EQ(dither<double>(reals.handle, realMap.handle, method, true),
                  dither<double>(reals.handle, realMap.handle, method, false));
    }
}

// A constant real slice has an empty box: no damping, every corrected value
// clamped back to the constant, so diffusion maps it like plain mapping.
TEST(DitherImageBehaviour, AConstantRealSliceDiffusesNothing) {
    HostBooksGuard guard;
    const std::vector<float> samples(5 * 4 * 2, 0.4f);
    OwnedImage image(newImage<float>({0, 5, 4, 2}, samples));
    OwnedRawArray map(newRawArray<float>({3, 2}, {0.0f, 0.0f, 0.5f, 0.3f, 1.0f, 1.0f}));
    const std::vector<float> expected = [] {
        std::vector<float> v;
        for (int i = 0; i < 5 * 4; ++i) v.insert(v.end(), {0.5f, 0.3f});
        return v;
    }();
    EXPECT_EQ(dither<float>(image.handle, map.handle, "FloydSteinberg"), expected);
    EXPECT_EQ(dither<float>(image.handle, map.handle, "None"), expected);
}

}  // namespace
