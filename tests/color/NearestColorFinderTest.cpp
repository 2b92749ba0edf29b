// The fast nearest-colour path against the exhaustive search, its oracle:
// the same index for every target, ties and duplicates included.
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "color/NearestColor.h"
#include "color/NearestColorFinder.h"

namespace {

using namespace ColorUtilities;

// Samples from a few levels spread over the type's whole range, so that
// equal distances and duplicated colours are common; signed samples go
// below zero, real ones a little past 0..1.
template <typename T, int N>
Color<T, N> randomColor(std::uint64_t &state, std::uint32_t levels) {
    Color<T, N> c;
    for (int k = 0; k <= N; ++k) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        const double level = static_cast<double>((state >> 33) % levels) / (levels - 1);
        if constexpr (std::is_floating_point_v<T>)
            c[k] = static_cast<T>(level * 1.2 - 0.1);
        else
            c[k] = static_cast<T>(std::numeric_limits<T>::lowest() +
                                  std::round(level * std::numeric_limits<T>::max() -
                                             level * std::numeric_limits<T>::lowest()));
    }
    return c;
}

template <typename T, int N>
void expectSameAnswers(std::uint64_t state) {
    for (int trial = 0; trial < 40; ++trial) {
        const std::uint32_t levels = 2 + static_cast<std::uint32_t>(trial % 2 == 0 ? trial % 6 : state >> 56);
        Palette<T, N> palette(0);
        const std::uint32_t size = 1 + static_cast<std::uint32_t>((state >> 40) % (trial % 3 == 0 ? 8 : 300));
        for (std::uint32_t i = 0; i < size; ++i)
            palette.colors.push_back(randomColor<T, N>(state, levels));
        NearestColorFinder<T, N> finder(palette);
        for (int t = 0; t < 300; ++t) {
            // Targets on finer levels than the palette fall between colours.
            const Color<T, N> target = randomColor<T, N>(state, levels * 2 - 1);
            ASSERT_EQ(finder.find(target), nearestColorIndex(palette, target))
                << "trial " << trial << " target " << t;
            ASSERT_EQ(finder.find(target), nearestColorIndex(palette, target)) << "remembered";
        }
    }
}

TEST(NearestColorFinder, AnswersAsTheExhaustiveSearchForEveryInstantiation) {
    std::uint64_t seed = 1;
    const auto each = [&]<typename T>() {
        expectSameAnswers<T, 0>(++seed);
        expectSameAnswers<T, 1>(++seed);
        expectSameAnswers<T, 2>(++seed);
        expectSameAnswers<T, 3>(++seed);
    };
    each.template operator()<signed char>();
    each.template operator()<unsigned char>();
    each.template operator()<unsigned short>();
    each.template operator()<float>();
    each.template operator()<double>();
}

// The exhaustive search answers 0 for a NaN target, and never picks a NaN
// colour; remembering by bytes keeps both. An empty palette answers 0.
TEST(NearestColorFinder, RealOdditiesAndEmptyPalettes) {
    Palette<double, 0> palette(0);
    for (double v : {0.5, std::nan(""), -0.0, 1.0}) palette.colors.emplace_back(&v);
    NearestColorFinder<double, 0> finder(palette);
    for (double v : {std::nan(""), 0.0, -0.0, 0.9, 0.7, std::numeric_limits<double>::infinity()}) {
        const Color<double, 0> target(&v);
        EXPECT_EQ(finder.find(target), nearestColorIndex(palette, target)) << v;
        EXPECT_EQ(finder.find(target), nearestColorIndex(palette, target)) << v;
    }
    const Palette<unsigned char, 2> none(0);
    NearestColorFinder<unsigned char, 2> nothing(none);
    EXPECT_EQ(nothing.find(Color<unsigned char, 2>()), 0u);
}

}  // namespace
