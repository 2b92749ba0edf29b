#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

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
    friend Base;  // its scan loop names the diffusion below

public:
    using Base::Base;
    using typename Base::Samples;
    using typename Base::Error;

protected:
    void resetState() override { Cells(this->methodState_, this->cols_).reset(); }
    void mapSlice(const SliceOutput<T, N> &output) override { this->scanAs(*this, output); }
    static constexpr bool kDiffusesError = true;

    class Diffusion;
    Diffusion startDiffusion() { return Diffusion(*this); }

private:
    using Arithmetic = DiffusedError<T>;
    using Cells = ErrorBuffer<typename Arithmetic::Value, N>;
};

// What the scan of one slice keeps between pixels. It lives in the scan
// loop's own frame, where the compiler holds it in registers: no store of
// an output sample can be taken to change it.
template <typename T, int N>
class FloydSteinberg<T, N>::Diffusion {
public:
    explicit Diffusion(FloydSteinberg &method) : cells_(method.methodState_, method.cols_) {
        for (int k = 0; k <= N; ++k) {
            if (kWholeRange && (method.bounds_.min[k] != T{0} || method.bounds_.max[k] != kMax))
                throw std::logic_error("integer samples are bounded by their type's range");
            low_[k] = method.bounds_.min[k];
            high_[k] = method.bounds_.max[k];
            range_[k] = static_cast<Range>(static_cast<Range>(high_[k]) - static_cast<Range>(low_[k]));
        }
    }

    void beginRow(std::uint32_t row) {
        cells_.beginRow(row);
        current_ = cells_.row(row);
        below_ = cells_.row(row + 1);
        ahead_ = Error{};
    }

    // The input pixel corrected by its accumulated error, damped first.
    [[gnu::always_inline]] Samples pixelAt(const T *input, std::ptrdiff_t col) const {
        const auto &cell = current_[col];
        Samples corrected;
        for (int k = 0; k <= N; ++k) {
            const auto error = cell[k] + ahead_[k];
            // Integer samples always span their type's whole range; as
            // constants, the bounds cost the loop no registers.
            if constexpr (kWholeRange)
                corrected[k] = Arithmetic::corrected(input[k], error, kMax - 0, T{0}, kMax);
            else
                corrected[k] = Arithmetic::corrected(input[k], error, range_[k], low_[k], high_[k]);
        }
        return corrected;
    }

    [[gnu::always_inline]] Error errorOf(const Samples &wanted, const Samples &chosen) const {
        Error error;
        for (int k = 0; k <= N; ++k) error[k] = Arithmetic::difference(wanted[k], chosen[k]);
        return error;
    }

    // The 7/16 share for the next pixel of the row is kept aside: the row
    // above has added all of its shares to that pixel's cell already, so
    // adding this one last, when the pixel is read, gives the very sum the
    // cell would hold, and the next pixel need not wait for a store and its
    // reload.
    [[gnu::always_inline]] void diffuseError(const Error &error, std::ptrdiff_t col, std::ptrdiff_t step) {
        const auto spread = [&](std::ptrdiff_t at, int sixteenths) __attribute__((always_inline)) {
            auto &cell = below_[at];
            for (int k = 0; k <= N; ++k) cell[k] += Arithmetic::share(error[k], sixteenths);
        };
        for (int k = 0; k <= N; ++k) ahead_[k] = Arithmetic::share(error[k], 7);
        spread(col, 3);
        spread(col + step, 5);
        spread(col + step + step, 1);
    }

private:
    using Range = typename Arithmetic::Range;
    using Cell = typename Cells::Cell;
    static constexpr bool kWholeRange = SampleTraits<T>::kFixedRange;
    static constexpr T kMax = [] {
        if constexpr (kWholeRange) return SampleTraits<T>::kMax;
        return T{};
    }();

    Cells cells_;
    Cell *current_ = nullptr;
    Cell *below_ = nullptr;
    Error ahead_{};
    std::array<Range, N + 1> range_;
    std::array<T, N + 1> low_, high_;
};

#define TARVEX_DECLARE_FLOYD_STEINBERG(T, N) extern template class FloydSteinberg<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_DECLARE_FLOYD_STEINBERG)
#undef TARVEX_DECLARE_FLOYD_STEINBERG

}  // namespace ColorUtilities
