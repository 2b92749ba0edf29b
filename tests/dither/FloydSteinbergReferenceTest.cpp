// DitherImage against a plain, separate implementation of the mapping rules.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "ReferenceDither.h"

namespace {

using namespace dither_test;

struct Case {
    ImageShape shape;  // channels are the instantiation's
    int colors;
    bool constant;  // every sample the same: a real slice with an empty box
};

// One row (left to right only), one column, two rows (the second backwards),
// odd sizes where errors fall into the guard cells, slices with their own
// state and box, few colours on larger images, so that errors grow into
// every damping band, and many colours.
constexpr Case kCases[] = {
    {{0, 7, 1, 0}, 3, false},  {{0, 1, 6, 0}, 4, false},   {{0, 5, 2, 0}, 5, false},
    {{0, 9, 7, 0}, 7, false},  {{3, 6, 5, 0}, 6, false},   {{0, 23, 17, 0}, 2, false},
    {{2, 19, 11, 0}, 3, false}, {{2, 5, 4, 0}, 3, true},   {{0, 31, 9, 0}, 60, false},
};

// The cache and sorted-search flags are ignored for a given colour map, so
// every call is made with both settings.
TEST(FloydSteinbergReference, EveryInstantiationBothMethodsAndFlags) {
    tarvex_test::HostBooksGuard guard;
    std::uint64_t seed = 0;
    forEachInstantiation([&]<typename T, int N>() {
        for (Case c : kCases) {
            c.shape.channels = N + 1;
            Random random(++seed);
            std::vector<T> samples = randomSamples<T>(random, c.shape);
            if (c.constant) std::fill(samples.begin(), samples.end(), samples.front());
            const std::vector<T> colorMap = randomColorMap<T>(random, c.colors, N + 1);
            rh::Image image(newImage<T>(c.shape, samples));
            rh::RawArray map(newRawArray<T>({c.colors, N + 1}, colorMap));
            for (const bool diffuse : {false, true}) {
                const std::vector<T> expected =
                    referenceDither<T, N + 1>(samples, c.shape, colorMap, diffuse);
                for (const bool flags : {false, true}) {
                    SCOPED_TRACE(::testing::Message()
                                 << "seed " << seed << (diffuse ? " diffused" : " plain")
                                 << (flags ? " flags" : ""));
                    MImage answer = nullptr;
                    ASSERT_EQ(callDitherImage({image.get(), map.get(),
                                               diffuse ? "FloydSteinberg" : "None", flags, flags},
                                              &answer),
                              0);
                    rh::Image result(answer);
                    ASSERT_EQ(samplesOf<T>(answer), expected);
                }
            }
        }
    });
}

}  // namespace
