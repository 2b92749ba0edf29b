// ImageQuantize, GetQuantizedImage and UniqueColors through the reference
// host: result shapes and types, the shortcuts, and every refusal with its
// code, leaving the host's books as they were.
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "QuantizeCall.h"

namespace {

using namespace quant_test;
using tarvex_test::HostBooksGuard;

constexpr int kQuantizeFailure = -14;

// Three colours on a 4 x 2 RGB picture.
const std::vector<unsigned char> kThreeColours = {0, 0, 0, 255, 0, 0, 0, 0, 0, 255, 0, 0,
                                                  0, 0, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0};

struct ThreeColourImage {
    rh::Image image{newImage<unsigned char>({0, 4, 2, 3}, kThreeColours)};
};

TEST(ImageQuantize, PaletteRowsPastTheLastColourRepeatIt) {
    HostBooksGuard guard;
    ThreeColourImage picture;
    for (mint method : {kMedianCut, kWu, kOctree}) {
        MRawArray answer = nullptr;
        ASSERT_EQ(callImageQuantize({picture.image.get(), 16, "None", true, method, 6}, &answer), 0);
        rh::RawArray palette(answer);
        EXPECT_EQ(dimensionsOf(answer), (std::vector<mint>{16, 3}));
        const auto rows = elementsOf<unsigned char>(answer);
        for (std::size_t i = 3; i < 16; ++i)
            for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(rows[i * 3 + k], rows[2 * 3 + k]) << method;
    }
}

TEST(ImageQuantize, IndexArrayTypeFollowsTheColourCount) {
    HostBooksGuard guard;
    ThreeColourImage picture;
    const struct {
        mint colorCount;
        MRawArray_Data_Type type;
    } cases[] = {{1, MRawArray_Type_UBit8},
                 {256, MRawArray_Type_UBit8},
                 {257, MRawArray_Type_UBit16},
                 {65536, MRawArray_Type_UBit16},
                 {65537, MRawArray_Type_UBit32},
                 {mint{1} << 32, MRawArray_Type_UBit32},
                 {(mint{1} << 32) + 3, MRawArray_Type_UBit64}};
    for (const auto &c : cases) {
        MRawArray answer = nullptr;
        ASSERT_EQ(callImageQuantize({picture.image.get(), c.colorCount, "FloydSteinberg", false, kMedianCut}, &answer),
                  0)
            << c.colorCount;
        rh::RawArray indices(answer);
        EXPECT_EQ(rawArrays()->getType(answer), c.type) << c.colorCount;
        EXPECT_EQ(dimensionsOf(answer), (std::vector<mint>{1, 2, 4}));
    }
    // 2^32 colours ask each method for none (the low 32 bits): median cut
    // still makes one, the octree ends with everything in its root, and Wu's
    // empty palette has nothing to map to.
    for (mint method : {kMedianCut, kOctree}) {
        MRawArray answer = nullptr;
        ASSERT_EQ(callImageQuantize({picture.image.get(), mint{1} << 32, "None", false, method}, &answer), 0);
        rh::RawArray indices(answer);
        for (unsigned int index : elementsOf<unsigned int>(answer)) EXPECT_EQ(index, 0u);
    }
    MRawArray answer = nullptr;
    EXPECT_EQ(callImageQuantize({picture.image.get(), mint{1} << 32, "None", false, kWu}, &answer),
              kQuantizeFailure);
}

TEST(ImageQuantize, IndicesPointAtEachPixelsOwnColourWhenThePaletteHoldsThemAll) {
    HostBooksGuard guard;
    ThreeColourImage picture;
    MRawArray paletteAnswer = nullptr, indexAnswer = nullptr;
    ASSERT_EQ(callImageQuantize({picture.image.get(), 3, "None", true, kWu, 6}, &paletteAnswer), 0);
    ASSERT_EQ(callImageQuantize({picture.image.get(), 3, "None", false, kWu, 6}, &indexAnswer), 0);
    rh::RawArray palette(paletteAnswer), indices(indexAnswer);
    const auto colours = elementsOf<unsigned char>(paletteAnswer);
    const auto index = elementsOf<unsigned char>(indexAnswer);
    for (std::size_t p = 0; p < index.size(); ++p)
        for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(colours[index[p] * 3 + k], kThreeColours[p * 3 + k]);
}

TEST(GetQuantizedImage, ReturnsTheInputItselfWhenItHasNoMoreColoursThanAskedFor) {
    HostBooksGuard guard;
    ThreeColourImage picture;
    for (mint colorCount : {mint{8}, mint{3}, mint{100}}) {
        MImage answer = nullptr;
        ASSERT_EQ(callGetQuantizedImage({picture.image.get(), colorCount, "Bogus", false, 99}, &answer), 0);
        EXPECT_EQ(answer, picture.image.get()) << colorCount;
    }
    MImage answer = nullptr;
    ASSERT_EQ(callGetQuantizedImage({picture.image.get(), 2, "None", false, kMedianCut}, &answer), 0);
    rh::Image redrawn(answer);
    EXPECT_NE(answer, picture.image.get());
    EXPECT_EQ(images()->getChannels(answer), 3);
}

// The tool's tests count ordinary colours both ways through this export.
TEST(UniqueColors, CountsEachNaNPixelApartWhenHashed) {
    HostBooksGuard guard;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    rh::Image reals(newImage<float>({0, 4, 1, 1}, {nan, nan, 0.5f, 0.5f}));
    mint count = 0;
    ASSERT_EQ(callUniqueColors(reals.get(), false, &count), 0);
    EXPECT_EQ(count, 3);
}

// A zero-filled 3 x 3 byte image with the given layout flags.
MImage bareImage(mint channels, MImage_CS_Type colorSpace, mbool interleaved, mbool alpha) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(0, 3, 3, channels, MImage_Type_Bit8, colorSpace, interleaved, alpha, &image), 0);
    return image;
}

void expectQuantizeRefused(const QuantizeArguments &arguments) {
    MRawArray array = nullptr;
    EXPECT_EQ(callImageQuantize(arguments, &array), kQuantizeFailure);
    EXPECT_EQ(array, nullptr);
    if (array != nullptr) rawArrays()->free(array);
    MImage image = nullptr;
    EXPECT_EQ(callGetQuantizedImage(arguments, &image), kQuantizeFailure);
    EXPECT_EQ(image, nullptr);
}

TEST(QuantizeRefuses, BadCountsMethodsDitherNamesAndImages) {
    HostBooksGuard guard;
    Random random(9);
    const ImageShape shape{0, 6, 6, 3};
    rh::Image image(newImage<unsigned char>(shape, randomSamples<unsigned char>(random, shape)));
    for (mint colorCount : {mint{0}, mint{-5}})
        expectQuantizeRefused({image.get(), colorCount, "None", false, 99});
    for (mint method : {mint{0}, mint{4}, mint{256}})
        expectQuantizeRefused({image.get(), 4, "None", false, method});
    expectQuantizeRefused({image.get(), 4, "none", false, kWu});

    rh::Image alpha(bareImage(4, MImage_CS_RGB, 1, 1));
    rh::Image planar(bareImage(2, MImage_CS_Automatic, 0, 0));
    rh::Image fiveChannels(bareImage(5, MImage_CS_Automatic, 1, 0));
    for (MImage bad : {alpha.get(), planar.get(), fiveChannels.get()}) {
        expectQuantizeRefused({bad, 2, "None", false, kWu});
        mint count = 0;
        EXPECT_EQ(callUniqueColors(bad, false, &count), kQuantizeFailure);
    }
    // A one-channel planar image is packed all the same.
    rh::Image grey(bareImage(1, MImage_CS_Gray, 0, 0));
    mint count = 0;
    EXPECT_EQ(callUniqueColors(grey.get(), false, &count), 0);
}

TEST(QuantizeRefuses, ResultArraysTheHostCannotCreate) {
    HostBooksGuard guard;
    Random random(11);
    const ImageShape shape{0, 9, 4, 3};
    rh::Image image(newImage<unsigned char>(shape, randomSamples<unsigned char>(random, shape)));
    for (bool paletteOnly : {false, true}) {
        rh_fail_next_raw_array_creation(1);
        MRawArray array = nullptr;
        EXPECT_EQ(callImageQuantize({image.get(), 4, "FloydSteinberg", paletteOnly, kOctree}, &array),
                  kQuantizeFailure);
        EXPECT_EQ(array, nullptr);
    }
    rh_fail_next_image_creation(1);
    MImage redrawn = nullptr;
    EXPECT_EQ(callGetQuantizedImage({image.get(), 4, "None", false, kMedianCut}, &redrawn), kQuantizeFailure);
    EXPECT_EQ(redrawn, nullptr);
    rh_clear_faults();
}

// A table of 2^32 cells (median cut on four 8-bit channels at 8 bits) or
// 257^4 cells (Wu likewise) is refused before it is allocated.
TEST(QuantizeRefuses, TablesLargerThanTheMemoryBudget) {
    HostBooksGuard guard;
    ASSERT_EQ(setenv("TARVEX_MEMORY_BUDGET", "1000000000", 1), 0);
    Random random(13);
    const ImageShape shape{0, 5, 5, 4};
    rh::Image image(newImage<unsigned char>(shape, randomSamples<unsigned char>(random, shape)));
    for (mint method : {kMedianCut, kWu}) {
        MRawArray array = nullptr;
        EXPECT_EQ(callImageQuantize({image.get(), 4, "None", true, method, 8}, &array), kQuantizeFailure);
        EXPECT_EQ(array, nullptr);
    }
    // The octree's own memory follows the colours; the cell cache of the
    // mapping after it is the table that does not fit.
    MRawArray array = nullptr;
    EXPECT_EQ(callImageQuantize({image.get(), 4, "None", false, kOctree, 8}, &array), kQuantizeFailure);
    ASSERT_EQ(callImageQuantize({image.get(), 4, "None", true, kOctree, 8}, &array), 0);
    rh::RawArray palette(array);
    // The palette's rows follow the count asked for, not the colours found.
    array = nullptr;
    EXPECT_EQ(callImageQuantize({image.get(), mint{1} << 28, "None", true, kOctree, 8}, &array),
              kQuantizeFailure);
    EXPECT_EQ(array, nullptr);
    unsetenv("TARVEX_MEMORY_BUDGET");
}

}  // namespace
