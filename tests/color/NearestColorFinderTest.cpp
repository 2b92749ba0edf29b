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

class Lcg {
public:
    explicit Lcg(std::uint64_t seed) : state_(seed) {}
    std::uint32_t below(std::uint32_t bound) {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint32_t>((state_ >> 33) % bound);
    }

private:
    std::uint64_t state_;
};

// Samples from a few levels spread over the type's range, so that equal
// distances and duplicated colours are common.
template <typename T>
T sampleAt(std::uint32_t level, std::uint32_t levels) {
    if constexpr (std::is_same_v<T, signed char>)
        return static_cast<T>(level % 2);
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(level) / static_cast<T>(levels);
    else
        return static_cast<T>(level * (std::numeric_limits<T>::max() / (levels - 1)));
}

template <typename T, int N>
Color<T, N> randomColor(Lcg &random, std::uint32_t levels) {
    Color<T, N> c;
    for (int k = 0; k <= N; ++k) c[k] = sampleAt<T>(random.below(levels), levels);
    return c;
}

template <typename T, int N>
void expectSameAnswers(std::uint64_t seed) {
    Lcg random(seed);
    for (int trial = 0; trial < 40; ++trial) {
        const std::uint32_t levels = 2 + random.below(trial % 2 == 0 ? 6 : 250);
        Palette<T, N> palette(0);
        const std::uint32_t size = 1 + random.below(trial % 3 == 0 ? 8 : 300);
        for (std::uint32_t i = 0; i < size; ++i)
            palette.colors.push_back(randomColor<T, N>(random, levels));
        NearestColorFinder<T, N> finder(palette);
        for (int t = 0; t < 300; ++t) {
            // Targets on finer levels than the palette fall between colours.
            const Color<T, N> target = randomColor<T, N>(random, levels * 2 - 1);
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
// colour; remembering by bytes keeps both.
TEST(NearestColorFinder, RealOddities) {
    Palette<double, 0> palette(0);
    for (double v : {0.5, std::nan(""), -0.0, 1.0}) palette.colors.emplace_back(&v);
    NearestColorFinder<double, 0> finder(palette);
    for (double v : {std::nan(""), 0.0, -0.0, 0.9, 0.7, std::numeric_limits<double>::infinity()}) {
        const Color<double, 0> target(&v);
        EXPECT_EQ(finder.find(target), nearestColorIndex(palette, target)) << v;
        EXPECT_EQ(finder.find(target), nearestColorIndex(palette, target)) << v;
    }
}

}  // namespace
