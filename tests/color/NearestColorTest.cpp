// The nearest-colour searches on small palettes: tie rules, the sorted search
// where it must agree with the exhaustive one, and where it may not.
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "color/IntensityIndex.h"
#include "color/NearestColor.h"
#include "color/PairDistanceTable.h"
#include "color/SortedSearch.h"

namespace {

using namespace ColorUtilities;

template <typename T, int N>
Palette<T, N> paletteOf(const std::vector<std::array<T, N + 1>> &colors) {
    Palette<T, N> palette(colors.size());
    for (const auto &c : colors) palette.colors.emplace_back(c.data());
    return palette;
}

template <typename T, int N>
Color<T, N> colorOf(std::array<T, N + 1> samples) {
    return Color<T, N>(samples.data());
}

using Rgb = std::array<unsigned char, 3>;

TEST(NearestColor, TiesDuplicatesAndSingleColours) {
    const auto rgb = [](std::vector<Rgb> colors, Rgb target) {
        return nearestColorIndex(paletteOf<unsigned char, 2>(colors),
                                 colorOf<unsigned char, 2>(target));
    };
    // (0,0,0) is 100 from both; the second is nearer in channel 0.
    EXPECT_EQ(rgb({{10, 0, 0}, {0, 10, 0}}, {0, 0, 0}), 1u);
    // Halfway with equal channel differences: the lower index, in either order.
    EXPECT_EQ(rgb({{0, 5, 5}, {10, 5, 5}}, {5, 5, 5}), 0u);
    EXPECT_EQ(rgb({{10, 5, 5}, {0, 5, 5}}, {5, 5, 5}), 0u);
    EXPECT_EQ(rgb({{1, 1, 1}, {9, 9, 9}, {1, 1, 1}}, {2, 3, 1}), 0u);
    // Real samples compare their differences in their own precision.
    EXPECT_EQ(nearestColorIndex(paletteOf<float, 1>({{0.5f, 0.0f}, {0.0f, 0.5f}}),
                                colorOf<float, 1>({0.0f, 0.0f})),
              1u);
    const auto single = paletteOf<unsigned short, 0>({{40000}});
    for (unsigned short v : {0, 40000, 65535})
        EXPECT_EQ(nearestColorIndex(single, colorOf<unsigned short, 0>({v})), 0u);
    IntensityIndex index;
    index.build(single);
    for (std::uint32_t entry : index.entries()) EXPECT_EQ(entry, 0u);
}

// Sorted-search state for a palette, the way a ditherer prepares it.
template <typename T, int N>
struct SortedPalette {
    explicit SortedPalette(Palette<T, N> p) : palette(std::move(p)) {
        sortByIntensity(palette);
        index.build(palette);
        pairs.build(palette);
    }
    std::uint32_t sorted(const Color<T, N> &target) const {
        return sortedNearestIndex(palette, index, pairs, target);
    }
    std::uint32_t exhaustive(const Color<T, N> &target) const {
        return nearestColorIndex(palette, target);
    }
    Palette<T, N> palette;
    IntensityIndex index;
    PairDistanceTable pairs;
};

TEST(SortedSearch, SortsByMeanIntensityOnceAndIndexesTheNearestMean) {
    SortedPalette<unsigned char, 2> s(
        paletteOf<unsigned char, 2>({Rgb{200, 200, 200}, Rgb{0, 30, 0}, Rgb{90, 90, 120}}));
    EXPECT_TRUE(s.palette.sorted);
    EXPECT_EQ(s.palette.colors[0][1], 30);
    EXPECT_EQ(s.palette.colors[2][0], 200);
    // Means 10, 100 and 200: the boundaries lie at 55 and 150.
    const std::uint32_t expected[][2] = {{54, 0}, {55, 1}, {149, 1}, {150, 2}, {255, 2}};
    for (const auto &[value, position] : expected)
        EXPECT_EQ(s.index.entries()[value], position) << value;
    EXPECT_EQ(s.pairs(0, 2), s.pairs(2, 0));
    EXPECT_EQ(s.pairs(1, 1), 0.0);
}

// Enough colours for the sort's partitioning; NaN means must end up last.
TEST(SortedSearch, PutsNaNMeansLast) {
    Palette<float, 0> palette(64);
    for (int i = 0; i < 64; ++i) {
        const float v = i % 3 == 0 ? std::nanf("") : static_cast<float>((i * 37) % 64);
        palette.colors.emplace_back(&v);
    }
    sortByIntensity(palette);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(std::isnan(palette.colors[i][0]), i >= 42) << i;
}

// Greys on one channel, or on three (where the sum bound is exact): the
// search starts at the nearest colour and nothing nearer exists, so both
// searches find the same distance (the index may differ at exact midpoints).
template <int N>
void expectSortedAgreesOnGreys(std::uint64_t state) {
    const auto next = [&] { return state = state * 6364136223846793005ULL + 1442695040888963407ULL; };
    const auto grey = [](unsigned v) {
        std::array<unsigned char, N + 1> c;
        c.fill(static_cast<unsigned char>(v));
        return c;
    };
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<std::array<unsigned char, N + 1>> colors;
        std::vector<bool> used(256, false);
        for (int size = 1 + static_cast<int>(next() >> 60); int(colors.size()) < size;) {
            const auto v = static_cast<unsigned>(next() >> 56);
            if (!used[v]) colors.push_back(grey(v)), used[v] = true;
        }
        SortedPalette<unsigned char, N> s(paletteOf<unsigned char, N>(colors));
        for (unsigned v = 0; v < 256; ++v) {
            const auto target = colorOf<unsigned char, N>(grey(v));
            const std::uint32_t sorted = s.sorted(target), exhaustive = s.exhaustive(target);
            EXPECT_EQ(colorDistance(target, s.palette.colors[sorted]),
                      colorDistance(target, s.palette.colors[exhaustive]))
                << "value " << v;
        }
    }
}

TEST(SortedSearch, AgreesWithTheExhaustiveSearchOnGreys) {
    expectSortedAgreesOnGreys<0>(12345);
    expectSortedAgreesOnGreys<2>(54321);
}

TEST(SortedSearch, KnownDepartures) {
    // 16-bit differences beyond the 8-bit table of squares are squared
    // exactly: from (250, 0) the second colour is nearer only through 260.
    SortedPalette<unsigned short, 1> wide(paletteOf<unsigned short, 1>({{0, 250}, {250, 260}}));
    EXPECT_EQ(wide.sorted(colorOf<unsigned short, 1>({250, 0})), 1u);
    // The intensity bound uses the factor 3 whatever the channel count: from
    // (100,100,100,100) the first is 441 away and has the nearer mean, the
    // second is 400 away but its channel sum differs by 40 (1600 > 3 * 441).
    SortedPalette<unsigned char, 3> cmyk(paletteOf<unsigned char, 3>(
        {{100, 100, 100, 121}, {110, 110, 110, 110}}));
    const auto target = colorOf<unsigned char, 3>({100, 100, 100, 100});
    EXPECT_EQ(cmyk.exhaustive(target), 1u);
    EXPECT_EQ(cmyk.sorted(target), 0u);
    // The start table covers mean intensities 0..255 only.
    SortedPalette<double, 2> s(paletteOf<double, 2>({{0.0, 0.0, 0.0}, {300.0, 300.0, 300.0}}));
    EXPECT_EQ(s.sorted(colorOf<double, 2>({255.4, 255.0, 255.0})), 1u);
    EXPECT_THROW(s.sorted(colorOf<double, 2>({256.0, 256.0, 255.0})), std::out_of_range);
    EXPECT_THROW(s.sorted(colorOf<double, 2>({-1.0, -1.0, -1.0})), std::out_of_range);
    // Real differences are truncated: on a 0..1 scale every distance is 0.
    SortedPalette<float, 0> unit(paletteOf<float, 0>({{0.1f}, {0.5f}}));
    EXPECT_EQ(unit.sorted(colorOf<float, 0>({0.45f})), 0u);
    EXPECT_EQ(unit.exhaustive(colorOf<float, 0>({0.45f})), 1u);
}

}  // namespace
