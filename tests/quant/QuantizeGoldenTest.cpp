// Quantization output, fixed to the bit: checksums of every method's palette,
// Floyd-Steinberg index array and redrawn image for every instantiation, 2-D
// and 3-D, on fixed pseudo-random images. Any change that alters one sample or
// index fails here.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "GoldenChecksums.h"
#include "QuantizeCall.h"

namespace {

using namespace quant_test;
using tarvex_test::checksumOf;
using tarvex_test::fnv1a;
using tarvex_test::typeName;

struct MethodCase {
    const char *name;
    mint number;
    mint bits;
};
constexpr MethodCase kMethods[] = {{"median-cut", kMedianCut, 5}, {"wu", kWu, 4}, {"octree", kOctree, 4}};

// The three answers of one method on one image: palette, indices, redrawn.
template <typename T, int N>
std::array<std::uint64_t, 3> checksumsOf(const MethodCase &method, bool threeD) {
    const std::string name = typeName<T>();
    Random random(fnv1a(name.data(), name.size()) ^ (N * 7919) ^ (threeD ? 1 : 0));
    const ImageShape shape{threeD ? 3 : 0, 29, 17, N + 1};
    rh::Image image(newImage<T>(shape, randomSamples<T>(random, shape)));
    const mint colors = std::is_same_v<T, signed char> ? 3 : 12;
    std::array<std::uint64_t, 3> sums{};
    MRawArray palette = nullptr, indices = nullptr;
    EXPECT_EQ(callImageQuantize({image.get(), colors, "None", true, method.number, method.bits}, &palette), 0);
    EXPECT_EQ(callImageQuantize({image.get(), colors, "FloydSteinberg", false, method.number, method.bits},
                                &indices),
              0);
    rh::RawArray ownedPalette(palette), ownedIndices(indices);
    if (palette != nullptr) sums[0] = checksumOf(elementsOf<T>(palette));
    if (indices != nullptr) sums[1] = checksumOf(elementsOf<unsigned char>(indices));
    MImage redrawn = nullptr;
    EXPECT_EQ(callGetQuantizedImage({image.get(), colors, "None", false, method.number, method.bits}, &redrawn),
              0);
    // An image with no more colours than asked for comes back itself.
    rh::Image ownedRedrawn(redrawn == image.get() ? nullptr : redrawn);
    if (redrawn != nullptr) sums[2] = checksumOf(samplesOf<T>(redrawn));
    return sums;
}

const std::map<std::string, std::uint64_t> kGolden = {
#include "QuantizeGolden.inc"
};

TEST(QuantizeGolden, EveryMethodAndInstantiationTwoAndThreeDimensions) {
    tarvex_test::HostBooksGuard guard;
    const bool print = std::getenv("TARVEX_PRINT_GOLDEN") != nullptr;
    forEachInstantiation([&]<typename T, int N>() {
        for (const MethodCase &method : kMethods)
            for (const bool threeD : {false, true}) {
                const auto sums = checksumsOf<T, N>(method, threeD);
                const char *parts[] = {"palette", "indices", "redrawn"};
                for (int p = 0; p < 3; ++p) {
                    const std::string key = typeName<T>() + "/" + std::to_string(N + 1) + "/" + method.name +
                                            "/" + parts[p] + (threeD ? "/3D" : "/2D");
                    if (print) {
                        std::printf("    {\"%s\", 0x%016llxULL},\n", key.c_str(),
                                    static_cast<unsigned long long>(sums[p]));
                        continue;
                    }
                    const auto golden = kGolden.find(key);
                    ASSERT_NE(golden, kGolden.end()) << key;
                    EXPECT_EQ(sums[p], golden->second) << key;
                }
            }
    });
}

}  // namespace
