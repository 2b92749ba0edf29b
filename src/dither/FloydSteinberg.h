#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "color/SampleTraits.h"
#include "dither/Ditherer.h"
#include "dither/ErrorBuffer.h"

namespace ColorUtilities {

namespace detail {

// Large accumulated errors are damped before use, so that a run of pixels
// far from every palette colour does not build up streaks.
[[gnu::always_inline]] inline double dampedError(double error, double range) {
    // Most errors are well under a quarter of the range, and are kept without
    // dividing: the margin leaves no doubt about how the ratio would round.
    constexpr double kSafeQuarter = 0.25 * (1.0 - 0x1.0p-40);
    if (range >= 0x1.0p-1000 && std::abs(error) < range * kSafeQuarter) return error;
    const double ratio = std::abs(error) / range;
    if (ratio < 0.25) return error;
    if (ratio < 0.5) return error * 0.5;
    if (ratio < 0.75) return error * 0.25;
    return error * 0.125;
}

// Half away from zero, as lround rounds, without the library call. The
// fraction is exact for samples of the integer types.
[[gnu::always_inline]] inline double roundHalfAway(double value) {
    const double whole = static_cast<double>(static_cast<std::int64_t>(value));
    const double fraction = value - whole;
    // Without branches: which way a sample rounds is as good as random.
    return whole + static_cast<double>(fraction >= 0.5) - static_cast<double>(fraction <= -0.5);
}

// The sample plus its error, clamped to the box: rounded for the integer
// types, converted to float before clamping for float.
template <typename T>
[[gnu::always_inline]] inline T correctedSample(T sample, double error, T low, T high) {
    const double wanted = static_cast<double>(sample) + error;
    if constexpr (std::is_integral_v<T>) {
        const double clamped =
            std::max(static_cast<double>(low), std::min(static_cast<double>(high), wanted));
        return static_cast<T>(roundHalfAway(clamped));
    } else {
        return std::max(low, std::min(high, static_cast<T>(wanted)));
    }
}

}  // namespace detail

// Error diffusion with the weights 7/16, 3/16, 5/16 and 1/16. The lower row's
// three weights sit one column further in the scan direction than in the
// textbook kernel (3/16 straight below, 5/16 one ahead, 1/16 two ahead);
// outputs depend on that placement bit for bit.
template <typename T, int N>
class FloydSteinberg final : public Ditherer<T, N> {
    using Base = Ditherer<T, N>;
    friend Base;  // its scan loop calls the hooks below by name

public:
    using Base::Base;
    using typename Base::ColorType;
    using typename Base::Error;

protected:
    void resetState() override { buffer().reset(); }
    ColorType pixelAt(std::uint32_t row, std::uint32_t col) override;
    Error errorOf(const ColorType &wanted, const ColorType &chosen) override;
    void diffuseError(const Error &error, std::uint32_t row, std::uint32_t col,
                      std::uint32_t step) override;
    void beginRow(std::uint32_t row) {
        buffer().beginRow(row);
        ahead_ = Error{};
    }
    void mapSlice(const SliceOutput<T, N> &output) override { this->scanAs(*this, output); }

private:
    ErrorBuffer<N> buffer() { return ErrorBuffer<N>(this->methodState_, this->cols_); }
    void dampInPlace(Error &error) const;

    // The 7/16 share for the next pixel of the row. The row above has added
    // all of its shares to that pixel's cell already, so adding this one
    // last, when the pixel is read, gives the very sum the cell would hold;
    // and the next pixel need not wait for a store to memory and its reload.
    Error ahead_{};
};

template <typename T, int N>
[[gnu::always_inline]] inline void FloydSteinberg<T, N>::dampInPlace(Error &error) const {
    using Difference = typename SampleTraits<T>::Difference;
    for (int k = 0; k <= N; ++k) {
        const Difference range = static_cast<Difference>(this->bounds_.max[k]) -
                                 static_cast<Difference>(this->bounds_.min[k]);
        if (range == 0) continue;
        error[k] = detail::dampedError(error[k], static_cast<double>(range));
    }
}

template <typename T, int N>
[[gnu::always_inline]] inline typename FloydSteinberg<T, N>::ColorType FloydSteinberg<T, N>::pixelAt(std::uint32_t row,
                                                                       std::uint32_t col) {
    const auto &cell = buffer().at(row, col);
    Error error;
    for (int k = 0; k <= N; ++k) error[k] = cell[k] + ahead_[k];
    dampInPlace(error);
    ColorType corrected(this->inputPixel(row, col));
    for (int k = 0; k <= N; ++k)
        corrected[k] = detail::correctedSample(corrected[k], error[k], this->bounds_.min[k],
                                               this->bounds_.max[k]);
    return corrected;
}

template <typename T, int N>
[[gnu::always_inline]] inline typename FloydSteinberg<T, N>::Error FloydSteinberg<T, N>::errorOf(const ColorType &wanted,
                                                                   const ColorType &chosen) {
    Error error;
    for (int k = 0; k <= N; ++k)
        error[k] = static_cast<double>(wanted[k]) - static_cast<double>(chosen[k]);
    return error;
}

template <typename T, int N>
[[gnu::always_inline]] inline void FloydSteinberg<T, N>::diffuseError(const Error &error, std::uint32_t row, std::uint32_t col,
                                        std::uint32_t step) {
    ErrorBuffer<N> cells = buffer();
    const auto spread = [&](std::uint32_t r, std::uint32_t c, double weight)
                            __attribute__((always_inline)) {
        auto &cell = cells.at(r, c);
        for (int k = 0; k <= N; ++k) cell[k] += error[k] * weight;
    };
    for (int k = 0; k <= N; ++k) ahead_[k] = error[k] * 0.4375;
    spread(row + 1, col, 0.1875);
    spread(row + 1, col + step, 0.3125);
    spread(row + 1, col + step + step, 0.0625);
}

#define TARVEX_DECLARE_FLOYD_STEINBERG(T, N) extern template class FloydSteinberg<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_DECLARE_FLOYD_STEINBERG)
#undef TARVEX_DECLARE_FLOYD_STEINBERG

}  // namespace ColorUtilities
