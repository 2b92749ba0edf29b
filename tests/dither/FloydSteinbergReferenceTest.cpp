// DitherImage against a plain, separate implementation of the mapping rules:
// nearest colour by (distance, per-channel differences, index), serpentine
// rows, per-slice bounds, damped errors and the shifted diffusion kernel.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "DitherCall.h"
#include "TestImages.h"

namespace {

using namespace dither_test;

template <typename T, int C>
using Pixel = std::array<T, C>;

template <typename T, int C>
std::size_t nearest(const std::vector<Pixel<T, C>> &palette, const Pixel<T, C> &target) {
    // The key that orders candidates: distance, then each channel's
    // difference, then the index.
    const auto key = [&](std::size_t i) {
        double distance = 0;
        std::array<decltype(std::abs(T{} - T{})), C> differences{};
        for (int k = 0; k < C; ++k) {
            const double d = static_cast<double>(palette[i][k]) - static_cast<double>(target[k]);
            distance += d * d;
            differences[k] = std::abs(palette[i][k] - target[k]);
        }
        return std::tuple(distance, differences, i);
    };
    std::size_t best = 0;
    for (std::size_t i = 1; i < palette.size(); ++i)
        if (key(i) < key(best)) best = i;
    return best;
}

template <typename T, int C>
struct SliceBounds {
    Pixel<T, C> low{}, high{};
};

template <typename T, int C>
SliceBounds<T, C> boundsOf(const T *samples, std::size_t pixels) {
    SliceBounds<T, C> b;
    if constexpr (std::is_integral_v<T>) {
        b.high.fill(std::is_same_v<T, signed char> ? 1 : std::numeric_limits<T>::max());
    } else {
        b.low.fill(std::numeric_limits<float>::max());
        b.high.fill(-std::numeric_limits<float>::max());
        for (std::size_t i = 0; i < pixels; ++i)
            for (int k = 0; k < C; ++k) {
                b.low[k] = std::min(b.low[k], samples[i * C + k]);
                b.high[k] = std::max(b.high[k], samples[i * C + k]);
            }
    }
    return b;
}

template <typename T>
double rangeOf(T low, T high) {
    if constexpr (std::is_integral_v<T>)
        return static_cast<double>(int(high) - int(low));
    else
        return static_cast<double>(T(high - low));
}

double damp(double error, double range) {
    const double ratio = std::abs(error) / range;
    return ratio < 0.25 ? error : ratio < 0.5 ? error / 2 : ratio < 0.75 ? error / 4 : error / 8;
}

template <typename T>
T corrected(T sample, double error, T low, T high) {
    const double v = static_cast<double>(sample) + error;
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(std::round(std::clamp(v, double(low), double(high))));
    else
        return std::clamp(static_cast<T>(v), low, high);
}

template <typename T, int C>
void referenceSlice(const T *in, T *out, int rows, int cols,
                    const std::vector<Pixel<T, C>> &palette, bool diffuse) {
    const SliceBounds<T, C> b = boundsOf<T, C>(in, std::size_t(rows) * cols);
    // Error cells for rows 0..rows and columns -2..cols+1.
    std::vector<std::array<double, C>> errors(std::size_t(rows + 1) * (cols + 4));
    const auto cell = [&](int r, int c) -> std::array<double, C> & {
        return errors.at(std::size_t(r) * (cols + 4) + (c + 2));
    };
    for (int r = 0; r < rows; ++r) {
        const int s = r % 2 == 0 ? 1 : -1;
        for (int i = 0; i < cols; ++i) {
            const int c = s == 1 ? i : cols - 1 - i;
            Pixel<T, C> wanted;
            for (int k = 0; k < C; ++k) {
                wanted[k] = in[(std::size_t(r) * cols + c) * C + k];
                if (!diffuse) continue;
                const double range = rangeOf(b.low[k], b.high[k]);
                if (range != 0) cell(r, c)[k] = damp(cell(r, c)[k], range);
                wanted[k] = corrected(wanted[k], cell(r, c)[k], b.low[k], b.high[k]);
            }
            const Pixel<T, C> &chosen = palette[nearest<T, C>(palette, wanted)];
            std::copy(chosen.begin(), chosen.end(), out + (std::size_t(r) * cols + c) * C);
            if (!diffuse) continue;
            for (int k = 0; k < C; ++k) {
                const double e = double(wanted[k]) - double(chosen[k]);
                cell(r, c + s)[k] += e * 7 / 16;
                cell(r + 1, c)[k] += e * 3 / 16;
                cell(r + 1, c + s)[k] += e * 5 / 16;
                cell(r + 1, c + 2 * s)[k] += e * 1 / 16;
            }
        }
    }
}

template <typename T, int C>
std::vector<T> referenceDither(const std::vector<T> &in, const ImageShape &shape,
                               const std::vector<T> &paletteSamples, bool diffuse) {
    std::vector<Pixel<T, C>> palette(paletteSamples.size() / C);
    for (std::size_t i = 0; i < palette.size(); ++i)
        std::copy_n(paletteSamples.begin() + i * C, C, palette[i].begin());
    std::vector<T> out(in.size());
    const int slices = shape.slices > 0 ? int(shape.slices) : 1;
    const std::size_t perSlice = std::size_t(shape.width * shape.height * C);
    for (int s = 0; s < slices; ++s)
        referenceSlice<T, C>(in.data() + s * perSlice, out.data() + s * perSlice, int(shape.height),
                             int(shape.width), palette, diffuse);
    return out;
}

template <typename T, int N>
void expectMatchesReference(const ImageShape &shape, int paletteSize, std::uint64_t seed) {
    constexpr int C = N + 1;
    Random random(seed);
    const std::vector<T> samples = randomImageSamples<T>(random, shape);
    const std::vector<T> paletteSamples = randomPaletteSamples<T>(random, paletteSize, C);
    OwnedImage image(newImage<T>(shape, samples));
    OwnedRawArray map(newRawArray<T>({paletteSize, C}, paletteSamples));
    for (const bool diffuse : {false, true}) {
        SCOPED_TRACE(diffuse ? "FloydSteinberg" : "None");
        MImage answer = nullptr;
        ASSERT_EQ(callDitherImage({image.handle, map.handle, diffuse ? "FloydSteinberg" : "None"},
                                  &answer),
                  0);
        OwnedImage result(answer);
        const std::vector<T> expected =
            referenceDither<T, C>(samples, shape, paletteSamples, diffuse);
        EXPECT_EQ(samplesOf<T>(result.handle), expected);
    }
}

TEST(FloydSteinbergReference, TinyImagesOfEveryElementType) {
    tarvex_test::HostBooksGuard guard;
    // One row (left to right only), one column, two rows (the second
    // backwards), odd sizes where errors fall into the guard cells.
    const ImageShape shapes[] = {{0, 7, 1, 1}, {0, 1, 6, 1}, {0, 5, 2, 1}, {0, 9, 7, 1}};
    std::uint64_t seed = 1;
    for (ImageShape shape : shapes) {
        SCOPED_TRACE(::testing::Message() << shape.width << "x" << shape.height);
        for (int channels = 1; channels <= 4; channels += 3) {
            shape.channels = channels;
            if (channels == 1) {
                expectMatchesReference<signed char, 0>(shape, 2, ++seed);
                expectMatchesReference<unsigned char, 0>(shape, 3, ++seed);
                expectMatchesReference<unsigned short, 0>(shape, 4, ++seed);
                expectMatchesReference<float, 0>(shape, 3, ++seed);
                expectMatchesReference<double, 0>(shape, 5, ++seed);
            } else {
                expectMatchesReference<signed char, 3>(shape, 5, ++seed);
                expectMatchesReference<unsigned char, 3>(shape, 6, ++seed);
                expectMatchesReference<unsigned short, 3>(shape, 4, ++seed);
                expectMatchesReference<float, 3>(shape, 7, ++seed);
                expectMatchesReference<double, 3>(shape, 3, ++seed);
            }
        }
    }
}

// Each slice starts without error and, for real samples, with its own box.
TEST(FloydSteinbergReference, SlicesAreMappedIndependently) {
    tarvex_test::HostBooksGuard guard;
    const ImageShape shape{3, 6, 5, 3};
    expectMatchesReference<unsigned char, 2>(shape, 4, 101);
    expectMatchesReference<float, 2>(shape, 6, 102);
    expectMatchesReference<double, 1>({4, 5, 4, 2}, 5, 103);
    expectMatchesReference<unsigned short, 2>(shape, 8, 104);
}

// Larger images with few colours, so that errors grow into every damping band.
TEST(FloydSteinbergReference, LargeErrorsAreDamped) {
    tarvex_test::HostBooksGuard guard;
    for (std::uint64_t seed = 200; seed < 210; ++seed) {
        expectMatchesReference<unsigned char, 2>({0, 23, 17, 3}, 2, seed);
        expectMatchesReference<float, 0>({2, 19, 11, 1}, 2, seed);
        expectMatchesReference<unsigned short, 1>({0, 13, 12, 2}, 3, seed);
    }
}

}  // namespace
