// What DitherImage refuses, with which code, and that a refused call writes
// no result and leaves nothing alive in the host.
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "host/CallFrame.h"

namespace {

using namespace dither_test;
using tarvex_test::HostBooksGuard;

constexpr int kRuntimeFailure = -14;
constexpr int kOtherFailure = -10;

const std::vector<unsigned char> kRgbPalette = {0, 0, 0, 255, 255, 255, 200, 30, 30};

// An 8-bit RGB image and a 3-colour map, valid unless a test spoils one.
struct RgbCall {
    OwnedImage image{newImage<unsigned char>({0, 4, 3, 3}, {})};
    OwnedRawArray map{newRawArray<unsigned char>({3, 3}, kRgbPalette)};
    DitherArguments arguments(const std::string &method = "None") const {
        return {image.handle, map.handle, method};
    }
};

void expectRefused(const DitherArguments &arguments, int code = kRuntimeFailure, mint argc = 5) {
    MImage answer = nullptr;
    EXPECT_EQ(callDitherImage(arguments, &answer, argc), code);
    EXPECT_EQ(answer, nullptr) << "a refused call wrote its result";
    if (answer != nullptr) images()->free(answer);
}

TEST(DitherImageRefuses, BadMethodNamesColorMapsAndArgumentCounts) {
    HostBooksGuard guard;
    RgbCall call;
    for (const char *name : {"none", "NONE", "Floydsteinberg", "Floyd-Steinberg", "Floyd Steinberg",
                             "FloydSteinberg ", " None", "", "None2"}) {
        SCOPED_TRACE(name);
        expectRefused(call.arguments(name));
    }
    // Wrong rank, wrong column count, or another element type than the
    // image's (whose host-interface error is folded into the same code).
    OwnedRawArray maps[] = {
        OwnedRawArray(newRawArray<unsigned char>({9}, kRgbPalette)),
        OwnedRawArray(newRawArray<unsigned char>({3, 3, 1}, kRgbPalette)),
        OwnedRawArray(newRawArray<unsigned char>({2, 4}, {1, 2, 3, 4, 5, 6, 7, 8})),
        OwnedRawArray(newRawArray<unsigned char>({3, 2}, {1, 2, 3, 4, 5, 6})),
        OwnedRawArray(newRawArray<double>({3, 3}, {0, 0, 0, 1, 1, 1, 0.5, 0.1, 0.1}))};
    for (const OwnedRawArray &map : maps)
        expectRefused({call.image.handle, map.handle, "FloydSteinberg"});
    OwnedImage bits(newImage<signed char>({0, 3, 3, 1}, {}));
    OwnedRawArray unsignedBytes(newRawArray<unsigned char>({2, 1}, {0, 1}));
    expectRefused({bits.handle, unsignedBytes.handle});
    expectRefused(call.arguments(), kRuntimeFailure, 4);
    expectRefused(call.arguments(), kRuntimeFailure, 2);
}

TEST(DitherImageRefuses, ImagesTheColourCodeCannotRead) {
    HostBooksGuard guard;
    OwnedRawArray map(newRawArray<unsigned char>({3, 3}, kRgbPalette));
    // Planar RGB, grey with alpha, five channels; then planar grey, which
    // has nothing to interleave and is accepted.
    const struct { mint channels; MImage_CS_Type space; mbool interleaved, alpha; } kinds[] = {
        {3, MImage_CS_RGB, 0, 0}, {3, MImage_CS_Gray, 1, 1}, {5, MImage_CS_Automatic, 1, 0},
        {1, MImage_CS_Gray, 0, 0}};
    OwnedRawArray greyMap(newRawArray<unsigned char>({2, 1}, {0, 255}));
    for (const auto &kind : kinds) {
        MImage raw = nullptr, answer = nullptr;
        ASSERT_EQ(rh_image_new(0, 4, 3, kind.channels, MImage_Type_Bit8, kind.space,
                               kind.interleaved, kind.alpha, &raw),
                  0);
        OwnedImage image(raw);
        if (kind.channels != 1) {
            expectRefused({image.handle, map.handle});
            continue;
        }
        EXPECT_EQ(callDitherImage({image.handle, greyMap.handle}, &answer), 0);
        OwnedImage result(answer);
    }
}

// The result is created first; when the host cannot make it, the call fails
// with nothing alive.
TEST(DitherImageRefuses, AResultTheHostCannotCreate) {
    HostBooksGuard guard;
    RgbCall call;
    OwnedImage threeD(newImage<float>({2, 3, 3, 1}, {}));
    OwnedRawArray map(newRawArray<float>({2, 1}, {0.0f, 1.0f}));
    for (const DitherArguments &arguments :
         {call.arguments("FloydSteinberg"), DitherArguments{threeD.handle, map.handle}}) {
        rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
        expectRefused(arguments);
        rh_clear_faults();
    }
}

// Running out of memory is not a runtime error: an export reports it with
// the code for other failures, as it does an index overrun.
TEST(DitherImageRefuses, OutOfMemoryIsAnOtherFailure) {
    using OstrelUtils::DitherCatchTable;
    EXPECT_EQ(DitherCatchTable::code(std::make_exception_ptr(std::bad_alloc())), kOtherFailure);
    EXPECT_EQ(DitherCatchTable::code(std::make_exception_ptr(std::out_of_range("x"))),
              kOtherFailure);
    EXPECT_EQ(DitherCatchTable::code(std::make_exception_ptr(std::runtime_error("x"))),
              kRuntimeFailure);
}

}  // namespace
