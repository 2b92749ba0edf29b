#pragma once

#include <cstdint>

#include "color/SampleTraits.h"
#include "dither/DiffusedError.h"
#include "dither/Ditherer.h"
#include "dither/ErrorBuffer.h"

namespace ColorUtilities {

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
    static constexpr bool kDiffusesError = true;

private:
    using Arithmetic = DiffusedError<T>;
    using Cells = ErrorBuffer<typename Arithmetic::Value, N>;
    Cells buffer() { return Cells(this->methodState_, this->cols_); }

    // The 7/16 share for the next pixel of the row. The row above has added
    // all of its shares to that pixel's cell already, so adding this one
    // last, when the pixel is read, gives the very sum the cell would hold;
    // and the next pixel need not wait for a store to memory and its reload.
    Error ahead_{};
};

// The damping range is taken in the promoted type of the samples.
template <typename T, int N>
[[gnu::always_inline]] inline typename FloydSteinberg<T, N>::ColorType FloydSteinberg<T, N>::pixelAt(
    std::uint32_t row, std::uint32_t col) {
    using Range = typename Arithmetic::Range;
    const auto &cell = buffer().at(row, col);
    ColorType corrected(this->inputPixel(row, col));
    for (int k = 0; k <= N; ++k) {
        const Range range =
            static_cast<Range>(this->bounds_.max[k]) - static_cast<Range>(this->bounds_.min[k]);
        corrected[k] = Arithmetic::corrected(corrected[k], cell[k] + ahead_[k], range,
                                             this->bounds_.min[k], this->bounds_.max[k]);
    }
    return corrected;
}

template <typename T, int N>
[[gnu::always_inline]] inline typename FloydSteinberg<T, N>::Error FloydSteinberg<T, N>::errorOf(
    const ColorType &wanted, const ColorType &chosen) {
    Error error;
    for (int k = 0; k <= N; ++k) error[k] = Arithmetic::difference(wanted[k], chosen[k]);
    return error;
}

template <typename T, int N>
[[gnu::always_inline]] inline void FloydSteinberg<T, N>::diffuseError(const Error &error,
                                                                      std::uint32_t row,
                                                                      std::uint32_t col,
                                                                      std::uint32_t step) {
    Cells cells = buffer();
    const auto spread = [&](std::uint32_t r, std::uint32_t c, int sixteenths)
                            __attribute__((always_inline)) {
        auto &cell = cells.at(r, c);
        for (int k = 0; k <= N; ++k) cell[k] += Arithmetic::share(error[k], sixteenths);
    };
    for (int k = 0; k <= N; ++k) ahead_[k] = Arithmetic::share(error[k], 7);
    spread(row + 1, col, 3);
    spread(row + 1, col + step, 5);
    spread(row + 1, col + step + step, 1);
}

#define TARVEX_DECLARE_FLOYD_STEINBERG(T, N) extern template class FloydSteinberg<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_DECLARE_FLOYD_STEINBERG)
#undef TARVEX_DECLARE_FLOYD_STEINBERG

}  // namespace ColorUtilities
