// DitherImage on parts of real photographs, with palettes of their own
// colours as a quantizer would keep, against the plain reference: 8-bit
// pictures to few colours, 16-bit four-channel ones to more colours than the
// grid search takes, and real-valued ones.
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "ReferenceDither.h"
#include "SamplePhotographs.h"

namespace {

using namespace dither_test;

constexpr int kWidth = 150, kHeight = 100;

struct Picture {
    std::vector<unsigned char> rgb;  // kWidth x kHeight
    std::vector<std::size_t> picks;  // pixels that make the palette
};

Picture cropOf(const tarvex_test::Photograph &photo, std::size_t colors, std::uint64_t seed) {
    Picture picture;
    const std::size_t left = photo.width / 3, top = photo.height / 3;
    for (std::size_t r = 0; r < kHeight; ++r)
        for (std::size_t c = 0; c < kWidth * 3; ++c)
            picture.rgb.push_back(photo.rgb[(top + r) * photo.width * 3 + left * 3 + c]);
    for (std::size_t i = 0; i < colors; ++i) {
        seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
        picture.picks.push_back((seed >> 33) % (kWidth * kHeight));
    }
    return picture;
}

// The picture's samples as T, C channels a pixel: red, green, blue and their
// mean, through `widen`; the palette from the picked pixels.
template <typename T, int C, class Widen>
void expectAsReference(const Picture &picture, Widen widen, const char *name) {
    std::vector<T> samples;
    for (std::size_t p = 0; p < picture.rgb.size(); p += 3) {
        const unsigned sum = picture.rgb[p] + picture.rgb[p + 1] + picture.rgb[p + 2];
        for (int k = 0; k < C; ++k) samples.push_back(widen(k < 3 ? picture.rgb[p + k] : sum / 3, p + k));
    }
    std::vector<T> colorMap;
    for (const std::size_t pixel : picture.picks)
        colorMap.insert(colorMap.end(), samples.begin() + pixel * C, samples.begin() + pixel * C + C);
    const ImageShape shape{0, kWidth, kHeight, C};
    rh::Image image(newImage<T>(shape, samples));
    rh::RawArray map(newRawArray<T>({static_cast<mint>(picture.picks.size()), C}, colorMap));
    for (const bool diffuse : {false, true}) {
        SCOPED_TRACE(::testing::Message() << name << (diffuse ? " diffused" : " plain") << ", "
                                          << picture.picks.size() << " colours");
        MImage answer = nullptr;
        ASSERT_EQ(callDitherImage({image.get(), map.get(), diffuse ? "FloydSteinberg" : "None",
                                   false, false},
                                  &answer),
                  0);
        rh::Image result(answer);
        ASSERT_EQ(samplesOf<T>(answer), (referenceDither<T, C>(samples, shape, colorMap, diffuse)));
    }
}

TEST(DitherPhotograph, AsTheReferenceForByteWordAndRealSamples) {
    tarvex_test::HostBooksGuard guard;
    int photographs = 0;
    std::uint64_t seed = 1;
    for (const char *name : tarvex_test::kSamplePhotographNames) {
        const tarvex_test::Photograph photo = tarvex_test::samplePhotograph(name);
        if (photo.rgb.empty() || photo.width < kWidth * 2 || photo.height < kHeight * 2) continue;
        ++photographs;
        const auto asIs = [](unsigned v, std::size_t) { return static_cast<unsigned char>(v); };
        expectAsReference<unsigned char, 3>(cropOf(photo, 256, ++seed), asIs, name);
        expectAsReference<unsigned char, 3>(cropOf(photo, 7, ++seed), asIs, name);
        // Low bits that differ from sample to sample make most colours new.
        const auto wide = [](unsigned v, std::size_t at) {
            return static_cast<unsigned short>(v * 257 ^ (at * 2654435761u >> 24 & 0xFF));
        };
        expectAsReference<unsigned short, 4>(cropOf(photo, 5000, ++seed), wide, name);
        const auto real = [](unsigned v, std::size_t) { return static_cast<float>(v) / 255.0f; };
        expectAsReference<float, 3>(cropOf(photo, 300, ++seed), real, name);
    }
    if (photographs == 0) GTEST_SKIP() << "no sample photographs in " << tarvex_test::kSamplePhotographs;
}

}  // namespace
