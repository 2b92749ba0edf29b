// What DitherImage refuses, with which code, and that a refused call writes
// no result and leaves nothing alive in the host.
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"

namespace {

using namespace dither_test;
using tarvex_test::HostBooksGuard;

constexpr int kRuntimeFailure = -14;
constexpr int kOtherFailure = -10;

const std::vector<unsigned char> kRgbPalette = {0, 0, 0, 255, 255, 255, 200, 30, 30};

// An 8-bit RGB image and a 3-colour map, valid unless a test spoils one.
struct RgbCall {
    rh::Image image{newImage<unsigned char>({0, 4, 3, 3}, {})};
    rh::RawArray map{newRawArray<unsigned char>({3, 3}, kRgbPalette)};
    DitherArguments arguments(const std::string &method = "None") const {
        return {image.get(), map.get(), method};
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
    rh::RawArray maps[] = {
        rh::RawArray(newRawArray<unsigned char>({9}, kRgbPalette)),
        rh::RawArray(newRawArray<unsigned char>({3, 3, 1}, kRgbPalette)),
        rh::RawArray(newRawArray<unsigned char>({2, 4}, {1, 2, 3, 4, 5, 6, 7, 8})),
        rh::RawArray(newRawArray<unsigned char>({3, 2}, {1, 2, 3, 4, 5, 6})),
        rh::RawArray(newRawArray<double>({3, 3}, {0, 0, 0, 1, 1, 1, 0.5, 0.1, 0.1}))};
    for (const rh::RawArray &map : maps)
        expectRefused({call.image.get(), map.get(), "FloydSteinberg"});
    rh::Image bits(newImage<signed char>({0, 3, 3, 1}, {}));
    rh::RawArray unsignedBytes(newRawArray<unsigned char>({2, 1}, {0, 1}));
    expectRefused({bits.get(), unsignedBytes.get()});
    expectRefused(call.arguments(), kRuntimeFailure, 4);
    expectRefused(call.arguments(), kRuntimeFailure, 2);
}

// The kernel can pass an empty colour map, which no method can map to; a
// method name that names no method is still refused as such.
TEST(DitherImageRefuses, AnEmptyColourMap) {
    HostBooksGuard guard;
    const RgbCall call;
    const rh::RawArray empty(newRawArray<unsigned char>({0, 3}, {}));
    for (const char *method : {"None", "FloydSteinberg"}) {
        SCOPED_TRACE(method);
        expectRefused({call.image.get(), empty.get(), method}, kOtherFailure);
    }
    expectRefused({call.image.get(), empty.get(), "Nearest"}, kRuntimeFailure);
}

TEST(DitherImageRefuses, ImagesTheColourCodeCannotRead) {
    HostBooksGuard guard;
    rh::RawArray map(newRawArray<unsigned char>({3, 3}, kRgbPalette));
    // Planar RGB, grey with alpha, five channels; then planar grey, which
    // has nothing to interleave and is accepted.
    const struct { mint channels; MImage_CS_Type space; mbool interleaved, alpha; } kinds[] = {
        {3, MImage_CS_RGB, 0, 0}, {3, MImage_CS_Gray, 1, 1}, {5, MImage_CS_Automatic, 1, 0},
        {1, MImage_CS_Gray, 0, 0}};
    rh::RawArray greyMap(newRawArray<unsigned char>({2, 1}, {0, 255}));
    for (const auto &kind : kinds) {
        MImage raw = nullptr, answer = nullptr;
        ASSERT_EQ(rh_image_new(0, 4, 3, kind.channels, MImage_Type_Bit8, kind.space,
                               kind.interleaved, kind.alpha, &raw),
                  0);
        rh::Image image(raw);
        if (kind.channels != 1) {
            expectRefused({image.get(), map.get()});
            continue;
        }
        EXPECT_EQ(callDitherImage({image.get(), greyMap.get()}, &answer), 0);
        rh::Image result(answer);
    }
}

// The result is created first; when the host cannot make it, the call fails
// with nothing alive.
TEST(DitherImageRefuses, AResultTheHostCannotCreate) {
    HostBooksGuard guard;
    RgbCall call;
    rh::Image threeD(newImage<float>({2, 3, 3, 1}, {}));
    rh::RawArray map(newRawArray<float>({2, 1}, {0.0f, 1.0f}));
    for (const DitherArguments &arguments :
         {call.arguments("FloydSteinberg"), DitherArguments{threeD.get(), map.get()}}) {
        rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
        expectRefused(arguments);
        rh_clear_faults();
    }
}

}  // namespace
