// DitherImage output, fixed to the bit: checksums of every instantiation's
// result on fixed pseudo-random images, both methods, 2-D and 3-D. Any change
// in the mapping that alters one sample fails here, and every checksum is
// confirmed by the separate reference implementation on the same input.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "GoldenChecksums.h"
#include "DitherCall.h"
#include "ReferenceDither.h"

namespace {

using namespace dither_test;
using tarvex_test::checksumOf;
using tarvex_test::fnv1a;
using tarvex_test::typeName;

struct Checksums {
    std::uint64_t plugin = 0;
    std::uint64_t reference = 0;
};

// Seeded per case so that each case's input stays the same whatever others do.
template <typename T, int N>
Checksums checksumsOf(const char *method, bool threeD) {
    const std::string name = typeName<T>();
    Random random(fnv1a(name.data(), name.size()) ^ (N * 7919) ^ (threeD ? 1 : 0));
    const ImageShape shape{threeD ? 3 : 0, 29, 17, N + 1};
    const int paletteSize = std::is_same_v<T, signed char> ? 3 : 12;
    const std::vector<T> samples = randomSamples<T>(random, shape);
    const std::vector<T> colorMap = randomColorMap<T>(random, paletteSize, N + 1);
    rh::Image image(newImage<T>(shape, samples));
    rh::RawArray map(newRawArray<T>({paletteSize, N + 1}, colorMap));
    MImage answer = nullptr;
    EXPECT_EQ(callDitherImage({image.get(), map.get(), method}, &answer), 0);
    rh::Image result(answer);
    const bool diffuse = std::string(method) == "FloydSteinberg";
    return {answer == nullptr ? 0 : checksumOf(samplesOf<T>(answer)),
            checksumOf(referenceDither<T, N + 1>(samples, shape, colorMap, diffuse))};
}

const std::map<std::string, std::uint64_t> kGolden = {
#include "DitherGolden.inc"
};

TEST(DitherImageGolden, EveryInstantiationBothMethodsTwoAndThreeDimensions) {
    tarvex_test::HostBooksGuard guard;
    const bool print = std::getenv("TARVEX_PRINT_GOLDEN") != nullptr;
    forEachInstantiation([&]<typename T, int N>() {
        for (const char *method : {"None", "FloydSteinberg"})
            for (const bool threeD : {false, true}) {
                const std::string key = typeName<T>() + "/" + std::to_string(N + 1) + "/" +
                                        method + (threeD ? "/3D" : "/2D");
                const Checksums sums = checksumsOf<T, N>(method, threeD);
                if (print)
                    std::printf("    {\"%s\", 0x%016llxULL},\n", key.c_str(),
                                static_cast<unsigned long long>(sums.plugin));
                const auto golden = kGolden.find(key);
                ASSERT_NE(golden, kGolden.end()) << "no checksum for " << key;
                EXPECT_EQ(sums.plugin, golden->second) << key;
                EXPECT_EQ(sums.reference, golden->second) << key << ", by the reference";
            }
    });
}

}  // namespace
