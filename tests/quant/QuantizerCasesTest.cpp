// The small cases where a quantizer can go wrong in a telling way, on the
// classes themselves: cell centres, box and axis choice, pruning order, Wu's
// failed cuts, and the method and bits rules of the factory.
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "ForEachInstantiation.h"
#include "color/MakeQuantizer.h"

namespace {

using Quant::makeQuantizer;

template <typename T, int N>
std::vector<std::array<T, N + 1>> paletteOf(Quant::Quantizer<T, N> &quantizer) {
    quantizer.quantize();
    std::vector<std::array<T, N + 1>> colors;
    for (const auto &color : quantizer.palette()->colors) colors.push_back(color.values);
    return colors;
}

template <typename T, int N>
std::vector<std::array<T, N + 1>> quantized(int method, const std::vector<T> &samples,
                                            std::uint32_t maxColors, int bits = 6) {
    auto quantizer = makeQuantizer<T, N>(method, static_cast<std::uint32_t>(samples.size() / (N + 1)),
                                         samples.data(), maxColors, bits);
    return paletteOf(*quantizer);
}

using Gray = std::array<unsigned char, 1>;

constexpr int kMedianCut = 1, kWu = 2, kOctree = 3;

template <int N>
struct PaletteCase {
    int method;
    std::vector<unsigned char> samples;
    std::uint32_t colors;
    int bits;
    std::vector<std::array<unsigned char, N + 1>> palette;
};

template <int N>
void expectPalettes(const std::vector<PaletteCase<N>> &cases) {
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const PaletteCase<N> &c = cases[i];
        EXPECT_EQ((quantized<unsigned char, N>(c.method, c.samples, c.colors, c.bits)), c.palette) << "case " << i;
    }
}

TEST(Quantizers, GreyPalettesWorkedOutByHand) {
    expectPalettes<0>({
        // 200 lies in cell 50 of 64: centre 50.5 x 255/64 = 201.2. At 8 bits
        // the centre 200.5 x 255/256 = 199.7 rounds back to 200. 255: 63.5 x 3.98.
        {kMedianCut, {200}, 4, 6, {{201}}},
        {kMedianCut, {200}, 4, 8, {{200}}},
        {kMedianCut, {255}, 4, 6, {{253}}},
        // One colour asked for: the count-weighted mean of the cell centres.
        {kMedianCut, {0, 0, 0, 255}, 1, 8, {{64}}},
        // Three asked for: the first cut gives two boxes of equal diagonals;
        // the tie goes to the earlier (lower) box, whose upper half is
        // appended after the unsplit box {170, 255}.
        {kMedianCut, {0, 85, 170, 255}, 3, 8, {{0}, {212}, {85}}},
        // No colour asked for (the low 32 bits of 2^32) leaves the octree's
        // root holding everything instead of pruning forever.
        {kOctree, {0, 100, 200}, 0, 6, {{100}}},
        // Method numbers use the low byte.
        {257, {200}, 1, 6, {{201}}},
    });
}

TEST(Quantizers, RgbPalettesWorkedOutByHand) {
    const std::vector<unsigned char> grey77(3 * 20, 77), three = {0, 0, 0, 10, 10, 10, 255, 20, 1};
    expectPalettes<2>({
        // The octree keeps every leaf when they match the colours asked for.
        {kOctree, {10, 10, 10, 200, 200, 200, 10, 200, 10}, 3, 6, {{10, 10, 10}, {10, 200, 10}, {200, 200, 200}}},
        // One colour asked for is the mean of all pixels.
        {kOctree, {0, 0, 0, 255, 255, 255}, 1, 6, {{128, 128, 128}}},
        // Wu: one colour gives one entry whatever is asked for; none asked
        // for gives an empty palette, one the truncated mean.
        {kWu, grey77, 1, 6, {{77, 77, 77}}},
        {kWu, grey77, 2, 6, {{77, 77, 77}}},
        {kWu, grey77, 7, 6, {{77, 77, 77}}},
        {kWu, grey77, 256, 6, {{77, 77, 77}}},
        {kWu, three, 0, 6, {}},
        {kWu, three, 1, 6, {{88, 10, 3}}},
    });
}

TEST(MedianCut, StopsWhenNoBoxHasTwoOccupiedCells) {
    const std::vector<unsigned char> three = {0, 0, 0, 128, 128, 128, 255, 255, 255, 0, 0, 0};
    EXPECT_EQ((quantized<unsigned char, 2>(kMedianCut, three, 8, 8)).size(), 3u);
}

TEST(MedianCut, CutsTheLowerChannelOnTies) {
    // Two channels with equal spans: channel 0 is cut first, so the lower
    // half of channel 0 comes first and the upper half is appended.
    const std::vector<unsigned char> corners = {0, 0, 255, 255};
    EXPECT_EQ((quantized<unsigned char, 1>(kMedianCut, corners, 2, 8)),
              (std::vector<std::array<unsigned char, 2>>{{0, 0}, {255, 255}}));
}

TEST(MedianCut, ChoosesByDiagonalOnceHalfTheColoursExist) {
    // Box A: two nearby cells; box B: three cells spread wide. With 3 colours
    // asked for after one cut (2 x 2 > 3), the wider box is cut, although
    // the box with more cells would be chosen by count.
    const std::vector<unsigned char> pixels = {0, 1, 2, 200, 255};
    const auto colors = quantized<unsigned char, 0>(kMedianCut, pixels, 3, 8);
    ASSERT_EQ(colors.size(), 3u);
    EXPECT_EQ(colors[0], (Gray{1}));
}

TEST(Octree, PrunesSinglePixelsWhenFewerLeavesThanColours) {
    // 10 colours in 10 distinct cells, one pixel each, asked for 16: the
    // unsigned first excess is huge, so every count-1 node is pruned and the
    // leaves merge upwards into fewer than 10 colours.
    std::vector<unsigned char> samples;
    for (int i = 0; i < 10; ++i) samples.insert(samples.end(), {static_cast<unsigned char>(25 * i), 0, 0});
    const auto colors = quantized<unsigned char, 2>(kOctree, samples, 16);
    EXPECT_LT(colors.size(), 10u);
    EXPECT_GE(colors.size(), 1u);
}

TEST(Octree, SampleOnACentreGoesToTheLowerChild) {
    // Scaled 0..255, the root centre is 127.5: 127.5 goes down with 0, and
    // the two colours asked for are 0..127.5 merged and 255 on its own.
    const std::vector<float> samples = {0.0f, 127.5f, 255.0f, 255.0f};
    const auto colors = quantized<float, 0>(kOctree, samples, 2, 1);
    ASSERT_EQ(colors.size(), 2u);
    EXPECT_FLOAT_EQ(colors[0][0], 63.75f);
    EXPECT_FLOAT_EQ(colors[1][0], 255.0f);
}

// Integer samples are tallied per leaf before they enter the tree; the
// palette must be the one that inserting pixel by pixel gives.
TEST(Octree, LeafTallyGivesThePixelByPixelPalette) {
    std::mt19937_64 random(3);
    tarvex_test::forEachChannelCount<signed char, unsigned char, unsigned short>([&]<typename T, int N>() {
        for (int trial = 0; trial < 25; ++trial) {
            const std::size_t pixels = 1 + random() % 3000;
            const int spread = 1 + static_cast<int>(random() % 4);
            std::vector<T> samples(pixels * (N + 1));
            for (T &sample : samples) {
                const std::uint64_t r = random();
                sample = static_cast<T>(spread == 1 ? r % 2 : spread == 2 ? 100 + r % 40 : r);
            }
            const auto colors = static_cast<std::uint32_t>(1 + random() % 300);
            const int bits = 2 + static_cast<int>(random() % 7);
            auto fast = makeQuantizer<T, N>(kOctree, pixels, samples.data(), colors, bits);
            auto plain = makeQuantizer<T, N>(kOctree, pixels, samples.data(), colors, bits);
            fast->quantize();
            static_cast<Quant::Octree<T, N> &>(*plain).quantizePixelByPixel();
            ASSERT_EQ(fast->palette()->colors.size(), plain->palette()->colors.size()) << trial;
            for (std::size_t i = 0; i < fast->palette()->colors.size(); ++i)
                ASSERT_EQ(fast->palette()->colors[i].values, plain->palette()->colors[i].values) << trial;
        }
    });
}

TEST(Wu, RetriesAFailedCutWithAnotherBox) {
    // Two colours split first; the next box chosen holds one colour and
    // cannot be cut, so the slot is filled by cutting the other box.
    std::vector<unsigned char> samples;
    for (int i = 0; i < 8; ++i) samples.insert(samples.end(), {0, 0, 0});
    samples.insert(samples.end(), {100, 0, 0, 120, 0, 0, 240, 0, 0});
    const auto colors = quantized<unsigned char, 2>(kWu, samples, 4);
    EXPECT_EQ(colors.size(), 4u);
}

TEST(Wu, SquaresOfLargeMomentSumsStayPositive) {
    // 46342 x 65535 squared passes 2^63: read as signed, every cut would
    // look worthless and the black pixel would be lost.
    std::vector<unsigned short> samples(46343, 65535);
    samples[0] = 0;
    EXPECT_EQ((quantized<unsigned short, 0>(kWu, samples, 2)),
              (std::vector<std::array<unsigned short, 1>>{{0}, {65535}}));
}

TEST(MakeQuantizer, MethodNumbersUseTheLowByteAndBitsOutsideTwoToEightMeanSix) {
    const std::vector<unsigned char> samples = {200};
    for (int bits : {0, 1, 9, -3, 1000})
        EXPECT_EQ((quantized<unsigned char, 0>(kMedianCut, samples, 1, bits)), (std::vector<Gray>{{201}}))
            << bits;
    for (std::int64_t method : {0, 4, 255, 512, -1})
        EXPECT_THROW((makeQuantizer<unsigned char, 0>(method, 1, samples.data(), 1, 6)), std::runtime_error)
            << method;
    // 1-bit images ignore the request: one bit, two for the octree.
    const std::vector<signed char> bits = {1};
    for (int method : {kMedianCut, kWu, kOctree})
        EXPECT_EQ((makeQuantizer<signed char, 0>(method, 1, bits.data(), 1, 7)->bits()),
                  method == kOctree ? 2 : 1);
}

TEST(MakeQuantizer, RealImagesTakeTheirBoxFromAllPixels) {
    const std::vector<double> samples = {-2.0, 0.5, 3.0};
    auto quantizer = makeQuantizer<double, 0>(kWu, 3, samples.data(), 3, 6);
    EXPECT_EQ(quantizer->bounds().min[0], -2.0);
    EXPECT_EQ(quantizer->bounds().max[0], 3.0);
    EXPECT_EQ(quantizer->bounds().lo, 1u);
}

}  // namespace
