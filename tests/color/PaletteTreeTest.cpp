// The palette tree against the exhaustive search, its oracle, on palettes made
// to trip a pruned search: for real samples ties made by few levels, signed
// zeros, duplicates, colours far apart in scale, and 65,536 colours; for
// integer samples the adversarial palettes of the grid's tests.
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "color/NearestColor.h"
#include "color/NearestColorFinder.h"
#include "color/PaletteTree.h"
#include "ForEachInstantiation.h"

namespace {

using namespace ColorUtilities;

std::uint64_t nextRandom(std::uint64_t &state) {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return state >> 33;
}

// Values on few levels tie often; a few are scaled far away or negated, and
// zeros come with both signs.
template <typename T>
T realSample(std::uint64_t &state, std::uint32_t levels) {
    const double level = static_cast<double>(nextRandom(state) % levels) / (levels - 1);
    switch (nextRandom(state) % 16) {
        case 0: return static_cast<T>(-level);
        case 1: return static_cast<T>(level * 1e6);
        case 2: return static_cast<T>(-0.0);
        default: return static_cast<T>(level);
    }
}

template <typename T, int N>
std::vector<Color<T, N>> realPalette(std::size_t size, std::uint32_t levels, std::uint64_t &state) {
    std::vector<Color<T, N>> colors;
    Color<T, N> c;
    while (colors.size() < size) {
        for (int k = 0; k <= N; ++k) c[k] = realSample<T>(state, levels);
        // Some colours twice, at distant indices.
        colors.insert(colors.end(), nextRandom(state) % 8 == 0 ? 2 : 1, c);
        if (colors.size() > 2 && nextRandom(state) % 4 == 0)
            std::swap(colors.back(), colors[nextRandom(state) % colors.size()]);
    }
    colors.resize(size);
    return colors;
}

template <typename T, int N>
void expectTreeAsExhaustiveOnRealPalettes(std::uint64_t state) {
    for (const std::size_t size : {1u, 2u, 9u, 17u, 300u, 65536u}) {
        for (const std::uint32_t levels : {3u, 11u, 1000u}) {
            Palette<T, N> palette(0);
            palette.colors = realPalette<T, N>(size, levels, state);
            const PaletteTree<T, N> tree(palette);
            const int targets = size > 1000 ? 200 : 1500;
            for (int t = 0; t < targets; ++t) {
                Color<T, N> target;
                // Halfway levels fall between colours at equal distances.
                for (int k = 0; k <= N; ++k) target[k] = realSample<T>(state, levels * 2 - 1);
                const std::uint32_t expected = nearestColorIndex(palette, target);
                ASSERT_EQ(tree.find(target), expected) << "size " << size << ", levels " << levels << ", target " << t;
                // A likely answer only bounds the visit, whichever it is.
                const auto likely = static_cast<std::uint32_t>(nextRandom(state) % size);
                ASSERT_EQ(tree.find(target, likely), expected) << "likely " << likely << ", target " << t;
            }
        }
    }
}

TEST(PaletteTree, AnswersAsTheExhaustiveSearchForRealSamples) {
    std::uint64_t seed = 300;
    tarvex_test::forEachChannelCount<float, double>(
        [&]<typename T, int N>() { expectTreeAsExhaustiveOnRealPalettes<T, N>(++seed); });
}

// Integer samples over the type's whole range, many of them equal, in
// palettes of every size up to 65,536; targets near colours and anywhere.
template <typename T, int N>
void expectTreeAsExhaustiveOnIntegerPalettes(std::uint64_t state) {
    const std::int64_t lowest = std::numeric_limits<T>::lowest();
    const std::int64_t span = std::int64_t{std::numeric_limits<T>::max()} - lowest + 1;
    for (const std::size_t size : {1u, 5u, 64u, 4097u, 65536u}) {
        const std::int64_t step = 1 + static_cast<std::int64_t>(nextRandom(state) % 64);
        const auto sample = [&] {
            return static_cast<T>(lowest + static_cast<std::int64_t>(nextRandom(state)) % span / step * step);
        };
        Palette<T, N> palette(0);
        Color<T, N> c;
        for (std::size_t i = 0; i < size; ++i) {
            for (int k = 0; k <= N; ++k) c[k] = sample();
            palette.colors.push_back(c);
        }
        const PaletteTree<T, N> tree(palette);
        for (int t = 0; t < 400; ++t) {
            Color<T, N> target = palette.colors[nextRandom(state) % size];
            for (int k = 0; k <= N; ++k)
                if (nextRandom(state) % 2 == 0) target[k] = static_cast<T>(target[k] + step / 2);
                else if (nextRandom(state) % 2 == 0) target[k] = sample();
            const std::uint32_t expected = nearestColorIndex(palette, target);
            ASSERT_EQ(tree.find(target), expected) << "size " << size << ", target " << t;
            const auto likely = static_cast<std::uint32_t>(nextRandom(state) % size);
            ASSERT_EQ(tree.find(target, likely), expected) << "likely " << likely << ", target " << t;
        }
    }
}

TEST(PaletteTree, AnswersAsTheExhaustiveSearchForIntegerSamples) {
    std::uint64_t seed = 400;
    tarvex_test::forEachChannelCount<signed char, unsigned char, unsigned short>(
        [&]<typename T, int N>() { expectTreeAsExhaustiveOnIntegerPalettes<T, N>(++seed); });
}

// Colours that are not finite leave the search to the exhaustive one, both
// in the palette and in the target.
TEST(PaletteTree, NonFiniteSamplesAnswerAsTheExhaustiveSearch) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    const std::vector<std::vector<double>> palettes = {
        {0.25, 0.5, 1.0, -3.0}, {0.5, inf, 0.5, -inf}, {nan, 0.75, 0.0, nan}};
    for (const auto &values : palettes) {
        Palette<double, 1> palette(0);
        for (std::size_t i = 0; i + 1 < values.size(); ++i) {
            const double pair[] = {values[i], values[i + 1]};
            palette.colors.emplace_back(pair);
        }
        NearestColorFinder<double, 1> finder(palette, false);
        for (const double a : {0.5, inf, -inf, nan, 1e308})
            for (const double b : {0.0, -0.0, nan, inf}) {
                const double samples[] = {a, b};
                const Color<double, 1> target(samples);
                EXPECT_EQ(finder.find(target), nearestColorIndex(palette, target)) << a << " " << b;
            }
    }
}

}  // namespace
