// The fast nearest-colour path against the exhaustive search, its oracle:
// the same index for every target, ties and duplicates included.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "color/NearestColor.h"
#include "ForEachInstantiation.h"
#include "SamplePhotographs.h"
#include "color/CandidateGrid.h"
#include "color/NearestColorFinder.h"
#include "color/PackedCandidates.h"

namespace {

using namespace ColorUtilities;

std::uint64_t nextRandom(std::uint64_t &state) {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return state >> 33;
}

// Samples from a few levels spread over the type's whole range, so that
// equal distances and duplicated colours are common; signed samples go
// below zero, real ones a little past 0..1.
template <typename T, int N>
Color<T, N> randomColor(std::uint64_t &state, std::uint32_t levels) {
    Color<T, N> c;
    for (int k = 0; k <= N; ++k) {
        const double level = static_cast<double>(nextRandom(state) % levels) / (levels - 1);
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
        for (int t = 0; t < 1000; ++t) {
            // Targets on finer levels than the palette fall between colours.
            const Color<T, N> target = randomColor<T, N>(state, levels * 2 - 1);
            ASSERT_EQ(finder.find(target), nearestColorIndex(palette, target))
                << "trial " << trial << " target " << t;
            ASSERT_EQ(finder.find(target), nearestColorIndex(palette, target)) << "remembered";
        }
    }
}

using tarvex_test::forEachChannelCount;
using tarvex_test::forEachInstantiation;

TEST(NearestColorFinder, AnswersAsTheExhaustiveSearchForEveryInstantiation) {
    std::uint64_t seed = 1;
    for (int round = 0; round < 3; ++round)
        forEachInstantiation([&]<typename T, int N>() { expectSameAnswers<T, N>(++seed); });
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

// Palettes made to trip a box search: colours on the edges of boxes at every
// level, pairs mirrored about box edges (ties), duplicates, one colour,
// colours packed into one corner, and a full 65,536.
template <typename T, int N>
std::vector<Color<T, N>> adversarialPalette(int kind, std::uint64_t &state) {
    constexpr int kBits = 8 * sizeof(T);
    const std::int64_t lowest = std::numeric_limits<T>::lowest();
    const auto sample = [&](std::int64_t offset) {
        return static_cast<T>(lowest + std::clamp<std::int64_t>(offset, 0, (std::int64_t{1} << kBits) - 1));
    };
    // An edge of a box at some level, or one step inside or outside it.
    const auto edge = [&] {
        const int level = 1 + static_cast<int>(nextRandom(state) % 8);
        const std::int64_t side = std::int64_t{1} << (kBits - level);
        const std::int64_t offset = side * static_cast<std::int64_t>(nextRandom(state) % (1u << level));
        return sample(offset - 1 + static_cast<std::int64_t>(nextRandom(state) % 3));
    };
    std::vector<Color<T, N>> colors;
    Color<T, N> c;
    switch (kind) {
        case 0:  // on box edges
            for (int i = 0; i < 200; ++i) {
                for (int k = 0; k <= N; ++k) c[k] = edge();
                colors.push_back(c);
            }
            break;
        case 1:  // pairs mirrored about an edge: every point on the edge ties
            for (int i = 0; i < 60; ++i) {
                Color<T, N> a, b;
                for (int k = 0; k <= N; ++k) {
                    const std::int64_t mid = edge() - lowest, d = 1 + nextRandom(state) % 5;
                    a[k] = sample(mid - d);
                    b[k] = k == 0 ? sample(mid + d) : a[k];
                }
                colors.push_back(a);
                colors.push_back(b);
            }
            break;
        case 2:  // every colour three times, in no order
            for (int i = 0; i < 40; ++i) {
                for (int k = 0; k <= N; ++k) c[k] = edge();
                colors.insert(colors.end(), 3, c);
            }
            for (std::size_t i = colors.size() - 1; i > 0; --i)
                std::swap(colors[i], colors[nextRandom(state) % (i + 1)]);
            break;
        case 3:  // one colour
            for (int k = 0; k <= N; ++k) c[k] = edge();
            colors.push_back(c);
            break;
        case 4:  // packed into one corner, far from most targets
            for (int i = 0; i < 100; ++i) {
                for (int k = 0; k <= N; ++k) c[k] = sample(static_cast<std::int64_t>(nextRandom(state) % 6));
                colors.push_back(c);
            }
            break;
        default:  // 65,536 colours
            for (int i = 0; i < 65536; ++i) {
                for (int k = 0; k <= N; ++k) c[k] = sample(static_cast<std::int64_t>(nextRandom(state)));
                colors.push_back(c);
            }
    }
    return colors;
}

// Targets on and beside the palette's own colours and box edges, and anywhere.
template <typename T, int N>
Color<T, N> adversarialTarget(const std::vector<Color<T, N>> &colors, std::uint64_t &state) {
    Color<T, N> target = colors[nextRandom(state) % colors.size()];
    for (int k = 0; k <= N; ++k) {
        const std::int64_t nudged = std::int64_t{target[k]} + static_cast<std::int64_t>(nextRandom(state) % 9) - 4;
        target[k] = nextRandom(state) % 4 == 0
                        ? static_cast<T>(nextRandom(state))
                        : static_cast<T>(std::clamp<std::int64_t>(nudged, std::numeric_limits<T>::lowest(),
                                                                  std::numeric_limits<T>::max()));
    }
    return target;
}

template <typename T, int N>
void expectSameOnAdversarialPalettes(std::uint64_t state) {
    for (int kind = 0; kind <= 5; ++kind) {
        Palette<T, N> palette(0);
        palette.colors = adversarialPalette<T, N>(kind, state);
        const int targets = kind == 5 ? 60 : 1500;
        // A small limit makes the search drop and remake its lists as it
        // goes; without remembering, every answer comes from the lists.
        for (const std::size_t entryLimit : {std::size_t{0}, kind == 5 ? std::size_t{0} : std::size_t{64}}) {
            for (const bool remember : {true, false}) {
                CandidateGrid<T, N> grid = entryLimit == 0 ? CandidateGrid<T, N>(palette, remember)
                                                           : CandidateGrid<T, N>(palette, remember, entryLimit);
                for (int t = 0; t < targets; ++t) {
                    const Color<T, N> target = adversarialTarget(palette.colors, state);
                    ASSERT_EQ(grid.find(target), nearestColorIndex(palette, target))
                        << "palette kind " << kind << ", target " << t << ", limit " << entryLimit
                        << (remember ? ", remembering" : "");
                }
            }
        }
    }
}

TEST(CandidateGrid, AnswersAsTheExhaustiveSearchOnAdversarialPalettes) {
    std::uint64_t seed = 77;
    forEachChannelCount<signed char, unsigned char, unsigned short>(
        [&]<typename T, int N>() { expectSameOnAdversarialPalettes<T, N>(++seed); });
}

// The narrow vectors too, on machines whose grids take the wide ones.
TEST(CandidateGrid, NarrowVectorsAnswerAsTheExhaustiveSearch) {
    std::uint64_t state = 91;
    for (int kind = 0; kind <= 4; ++kind) {
        Palette<unsigned char, 2> palette(0);
        palette.colors = adversarialPalette<unsigned char, 2>(kind, state);
        CandidateGrid<unsigned char, 2> grid(palette, false, std::size_t{1} << 24, false);
        for (int t = 0; t < 20000; ++t) {
            const Color<unsigned char, 2> target = adversarialTarget(palette.colors, state);
            ASSERT_EQ(grid.find(target), nearestColorIndex(palette, target)) << "kind " << kind << ", target " << t;
        }
    }
}

// Every possible target of one- and two-channel bytes.
TEST(CandidateGrid, AnswersAsTheExhaustiveSearchForEveryByteTarget) {
    std::uint64_t state = 5;
    for (int kind = 0; kind <= 4; ++kind) {
        Palette<unsigned char, 0> grey(0);
        grey.colors = adversarialPalette<unsigned char, 0>(kind, state);
        Palette<unsigned char, 1> pairs(0);
        pairs.colors = adversarialPalette<unsigned char, 1>(kind, state);
        CandidateGrid<unsigned char, 0> greyGrid(grey);
        CandidateGrid<unsigned char, 1> pairGrid(pairs);
        for (unsigned v = 0; v < 65536; ++v) {
            const unsigned char samples[] = {static_cast<unsigned char>(v >> 8),
                                             static_cast<unsigned char>(v)};
            const Color<unsigned char, 1> pair(samples);
            ASSERT_EQ(pairGrid.find(pair), nearestColorIndex(pairs, pair)) << kind << " " << v;
            const Color<unsigned char, 0> level(samples + 1);
            ASSERT_EQ(greyGrid.find(level), nearestColorIndex(grey, level)) << kind << " " << v;
        }
    }
}

// The vector comparison of packed candidates against the one-by-one order,
// on colours of few levels, where equal distances are the rule; lists
// shorter than seven repeat their first index, as the grid packs them.
TEST(PackedCandidates, VectorAnswersAsOneByOne) {
    std::uint64_t state = 3;
    for (int trial = 0; trial < 400; ++trial) {
        const std::uint32_t levels = 2 + trial % 4;
        // Wide vectors where the processor has them, and narrow ones.
        PackedCandidates packed(trial % 2 == 0);
        for (int i = 0; i < 256; ++i) {
            std::uint32_t color = 0;
            for (int k = 0; k < 4; ++k) color |= nextRandom(state) % levels * (255 / (levels - 1)) << (8 * k);
            packed.add(color);
        }
        for (int t = 0; t < 500; ++t) {
            std::uint32_t indices[PackedCandidates::kCapacity];
            const std::uint32_t count = 1 + nextRandom(state) % PackedCandidates::kCapacity;
            for (std::uint32_t i = 0; i < count; ++i) indices[i] = nextRandom(state) % 256;
            const std::uint64_t candidates = PackedCandidates::candidates(indices, count);
            std::uint32_t target = 0;
            for (int k = 0; k < 4; ++k) target |= (nextRandom(state) % (2 * levels - 1)) * (255 / (2 * levels - 2)) << (8 * k);
            ASSERT_EQ(packed.nearest(candidates, target), packed.nearestOneByOne(candidates, target))
                << "trial " << trial << " target " << t;
        }
    }
}

TEST(CandidateGrid, AnswersAsTheExhaustiveSearchOnPhotographs) {
    int photographs = 0;
    std::uint64_t state = 11;
    for (const char *name : tarvex_test::kSamplePhotographNames) {
        const std::vector<unsigned char> rgb = tarvex_test::samplePhotograph(name).rgb;
        if (rgb.empty()) continue;
        ++photographs;
        const std::size_t pixels = rgb.size() / 3;
        // 256 of the photograph's own colours, as a quantizer would keep.
        Palette<unsigned char, 2> palette(256);
        for (int i = 0; i < 256; ++i) palette.colors.emplace_back(&rgb[nextRandom(state) % pixels * 3]);
        CandidateGrid<unsigned char, 2> grid(palette);
        for (std::size_t p = 0; p < pixels; p += 3) {
            const Color<unsigned char, 2> target(&rgb[p * 3]);
            ASSERT_EQ(grid.find(target), nearestColorIndex(palette, target)) << name << " " << p;
        }
    }
    if (photographs == 0) GTEST_SKIP() << "no sample photographs in " << tarvex_test::kSamplePhotographs;
}

}  // namespace
