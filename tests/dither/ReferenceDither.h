// A plain, separate implementation of DitherImage's mapping rules: nearest
// colour by (distance, per-channel differences, index), serpentine rows,
// per-slice bounds, damped errors and the shifted diffusion kernel, over a
// whole-image error buffer.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>
#include <vector>

#include "DitherCall.h"

namespace dither_test {

template <typename T, int C>
using Pixel = std::array<T, C>;

template <typename T, int C>
std::size_t nearest(const std::vector<Pixel<T, C>> &palette, const Pixel<T, C> &target) {
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

inline double damp(double error, double range) {
    const double ratio = std::abs(error) / range;
    return ratio < 0.25 ? error : ratio < 0.5 ? error / 2 : ratio < 0.75 ? error / 4 : error / 8;
}

template <typename T, int C>
void referenceSlice(const T *in, T *out, int rows, int cols,
                    const std::vector<Pixel<T, C>> &palette, bool diffuse) {
    // The box: the type's range, or the slice's own for real samples.
    Pixel<T, C> low{}, high{};
    if constexpr (std::is_integral_v<T>) {
        high.fill(std::is_same_v<T, signed char> ? 1 : std::numeric_limits<T>::max());
    } else {
        low.fill(std::numeric_limits<float>::max());
        high.fill(-std::numeric_limits<float>::max());
        for (int i = 0; i < rows * cols * C; ++i) {
            low[i % C] = std::min(low[i % C], in[i]);
            high[i % C] = std::max(high[i % C], in[i]);
        }
    }
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
                double &e = cell(r, c)[k];
                // The range in the promoted type: int, or float for float.
                const double range = static_cast<double>(high[k] - low[k]);
                if (range != 0) e = damp(e, range);
                const double v = static_cast<double>(wanted[k]) + e;
                if constexpr (std::is_integral_v<T>)
                    wanted[k] = static_cast<T>(std::round(std::clamp(v, double(low[k]), double(high[k]))));
                else
                    wanted[k] = std::clamp(static_cast<T>(v), low[k], high[k]);
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
                               const std::vector<T> &colorMap, bool diffuse) {
    std::vector<Pixel<T, C>> palette(colorMap.size() / C);
    for (std::size_t i = 0; i < palette.size(); ++i)
        std::copy_n(colorMap.begin() + i * C, C, palette[i].begin());
    std::vector<T> out(in.size());
    const std::size_t perSlice = std::size_t(shape.width * shape.height * C);
    for (std::size_t at = 0; at < in.size(); at += perSlice)
        referenceSlice<T, C>(in.data() + at, out.data() + at, int(shape.height), int(shape.width),
                             palette, diffuse);
    return out;
}

}  // namespace dither_test
