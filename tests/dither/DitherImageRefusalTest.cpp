// What DitherImage refuses, with which code, and that a refused call writes
// no result and leaves nothing alive in the host.
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "TestImages.h"

namespace {

using namespace dither_test;
using tarvex_test::HostBooksGuard;

constexpr int kRuntimeFailure = -14;
constexpr int kOtherFailure = -10;

std::vector<unsigned char> rgbPalette() { return {0, 0, 0, 255, 255, 255, 200, 30, 30}; }

// An 8-bit RGB image and a 3-colour map, valid unless a test spoils one.
struct RgbCall {
    OwnedImage image{newImage<unsigned char>({0, 4, 3, 3}, {})};
    OwnedRawArray map{newRawArray<unsigned char>({3, 3}, rgbPalette())};
    DitherArguments arguments(const std::string &method = "None") const {
        return {image.handle, map.handle, method};
    }
};

void expectRefused(const DitherArguments &arguments, int code, mint argc = 5) {
    MImage answer = nullptr;
    EXPECT_EQ(callDitherImage(arguments, &answer, argc), code);
    EXPECT_EQ(answer, nullptr) << "a refused call wrote its result";
    if (answer != nullptr) images()->free(answer);
}

TEST(DitherImageRefuses, MethodNamesOtherThanTheTwoExactOnes) {
    HostBooksGuard guard;
    RgbCall call;
    for (const char *name : {"none", "NONE", "Floydsteinberg", "Floyd-Steinberg", "Floyd Steinberg",
                             "FloydSteinberg ", " None", "", "None2"}) {
        SCOPED_TRACE(name);
        expectRefused(call.arguments(name), kRuntimeFailure);
    }
}

TEST(DitherImageRefuses, ColorMapsOfTheWrongShape) {
    HostBooksGuard guard;
    RgbCall call;
    OwnedRawArray rankOne(newRawArray<unsigned char>({9}, rgbPalette()));
    OwnedRawArray rankThree(newRawArray<unsigned char>({3, 3, 1}, rgbPalette()));
    OwnedRawArray fourColumns(newRawArray<unsigned char>({2, 4}, {1, 2, 3, 4, 5, 6, 7, 8}));
    OwnedRawArray twoColumns(newRawArray<unsigned char>({3, 2}, {1, 2, 3, 4, 5, 6}));
    for (MRawArray map : {rankOne.handle, rankThree.handle, fourColumns.handle, twoColumns.handle})
        expectRefused({call.image.handle, map, "FloydSteinberg"}, kRuntimeFailure);
}

// The colour map must have the image's element type; the host-interface
// error of a mismatch is folded into the runtime-failure code.
TEST(DitherImageRefuses, ColorMapsOfAnotherElementType) {
    HostBooksGuard guard;
    RgbCall call;
    OwnedRawArray reals(newRawArray<double>({3, 3}, {0, 0, 0, 1, 1, 1, 0.5, 0.1, 0.1}));
    expectRefused({call.image.handle, reals.handle, "None"}, kRuntimeFailure);
    OwnedImage bits(newImage<signed char>({0, 3, 3, 1}, {}));
    OwnedRawArray unsignedBytes(newRawArray<unsigned char>({2, 1}, {0, 1}));
    expectRefused({bits.handle, unsignedBytes.handle, "None"}, kRuntimeFailure);
}

TEST(DitherImageRefuses, ImagesTheColourCodeCannotRead) {
    HostBooksGuard guard;
    OwnedRawArray map(newRawArray<unsigned char>({3, 3}, rgbPalette()));
    MImage planar = nullptr, withAlpha = nullptr, fiveChannels = nullptr;
    ASSERT_EQ(rh_image_new(0, 4, 3, 3, MImage_Type_Bit8, MImage_CS_RGB, 0, 0, &planar), 0);
    ASSERT_EQ(rh_image_new(0, 4, 3, 3, MImage_Type_Bit8, MImage_CS_Gray, 1, 1, &withAlpha), 0);
    ASSERT_EQ(rh_image_new(0, 4, 3, 5, MImage_Type_Bit8, MImage_CS_Automatic, 1, 0, &fiveChannels),
              0);
    OwnedImage owners[] = {OwnedImage(planar), OwnedImage(withAlpha), OwnedImage(fiveChannels)};
    for (const OwnedImage &image : owners)
        expectRefused({image.handle, map.handle, "None"}, kRuntimeFailure);

    // One channel has nothing to interleave: a planar grey image is fine.
    MImage planarGrey = nullptr, answer = nullptr;
    ASSERT_EQ(rh_image_new(0, 4, 3, 1, MImage_Type_Bit8, MImage_CS_Gray, 0, 0, &planarGrey), 0);
    OwnedImage grey(planarGrey);
    OwnedRawArray greyMap(newRawArray<unsigned char>({2, 1}, {0, 255}));
    EXPECT_EQ(callDitherImage({grey.handle, greyMap.handle, "None"}, &answer), 0);
    OwnedImage result(answer);
}

TEST(DitherImageRefuses, MissingArguments) {
    HostBooksGuard guard;
    RgbCall call;
    expectRefused(call.arguments(), kRuntimeFailure, 4);
    expectRefused(call.arguments(), kRuntimeFailure, 2);
}

// The result is created first; when the host cannot make it, the call fails
// with nothing alive and the method name given back all the same.
TEST(DitherImageRefuses, AResultTheHostCannotCreate) {
    HostBooksGuard guard;
    RgbCall call;
    rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
    expectRefused(call.arguments("FloydSteinberg"), kRuntimeFailure);
    rh_clear_faults();
    OwnedImage threeD(newImage<float>({2, 3, 3, 1}, {}));
    OwnedRawArray map(newRawArray<float>({2, 1}, {0.0f, 1.0f}));
    rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
    expectRefused({threeD.handle, map.handle, "None"}, kRuntimeFailure);
    rh_clear_faults();
}

#if defined(__SANITIZE_ADDRESS__)
TEST(DitherImageRefuses, MemoryThatCannotBeHad) {
    GTEST_SKIP() << "an address-space limit cannot be combined with the sanitizer's shadow memory";
}
#else
long virtualMemoryBytes() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    statm >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

// Calls DitherImage with the address space capped just above what the
// process uses; 0 when the call fails with the other-failure code and leaves
// nothing alive.
int ditherWithoutMemory(const DitherArguments &arguments) {
    const RhCounters before = rh_counters();
    const rlimit limit{static_cast<rlim_t>(virtualMemoryBytes() + (16L << 20)), RLIM_INFINITY};
    ::setrlimit(RLIMIT_AS, &limit);
    MImage answer = nullptr;
    const int code = callDitherImage(arguments, &answer);
    const bool clean = rh_counters().liveImages == before.liveImages && answer == nullptr;
    return code == kOtherFailure && clean ? 0 : 1;
}

// Out of memory is not a runtime error: the colour-cell storage that every
// ditherer allocates (64 MB for three channels) cannot be had.
TEST(DitherImageRefuses, MemoryThatCannotBeHad) {
    RgbCall call;
    EXPECT_EXIT(std::_Exit(ditherWithoutMemory(call.arguments())), ::testing::ExitedWithCode(0),
                "");
}
#endif

}  // namespace
