#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

#include "color/Color.h"
#include "color/ColorBounds.h"
#include "color/NumericConversions.h"
#include "color/SampleTraits.h"

namespace ColorUtilities {

// Which cell of its channel a sample falls in.
template <typename T>
struct CellRule {
    // Real samples: cells of cellWidth counted from min, the lower edge of
    // each cell belonging to the cell below.
    template <int N>
    static std::uint32_t cell(T sample, int k, const ColorBounds<T, N> &bounds) {
        if (sample == bounds.min[k] || bounds.max[k] == bounds.min[k]) return bounds.lo;
        const double offset = static_cast<double>(sample - bounds.min[k]) / bounds.cellWidth[k];
        return static_cast<std::uint32_t>(toInt64Wrapping(std::ceil(offset) + bounds.lo - 1));
    }
};

template <>
struct CellRule<signed char> {
    template <int N>
    static std::uint32_t cell(signed char sample, int, const ColorBounds<signed char, N> &bounds) {
        return sample < 1 ? bounds.lo : bounds.hi - 1;
    }
};

// 8- and 16-bit samples: the top bits of the sample.
template <typename T>
struct ShiftCellRule {
    template <int N>
    static std::uint32_t cell(T sample, int, const ColorBounds<T, N> &bounds) {
        return (static_cast<std::uint32_t>(sample) >>
                (SampleTraits<T>::kSampleBits - bounds.bits)) +
               bounds.lo;
    }
};
template <>
struct CellRule<unsigned char> : ShiftCellRule<unsigned char> {};
template <>
struct CellRule<unsigned short> : ShiftCellRule<unsigned short> {};

// Palette indices of colours already searched, by cell: colours that share a
// cell share an answer. A dense (N+1)-dimensional array of 2^bits cells per
// channel, allocated zero-filled and untouched until used, so that an unused
// cache costs no memory pages.
template <typename T, int N>
class ColorCellCache {
public:
    static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;

    explicit ColorCellCache(std::uint32_t bits) {
        const std::uint64_t side = std::uint64_t{1} << bits;
        entryCount_ = 1;
        for (int k = N; k >= 0; --k) {
            dimensions_[k] = static_cast<std::uint32_t>(side);
            strides_[k] = entryCount_;
            entryCount_ *= side;
        }
        entries_.reset(
            static_cast<std::uint32_t *>(std::calloc(entryCount_, sizeof(std::uint32_t))));
        if (entries_ == nullptr) throw std::bad_alloc();
    }

    // The key of target's cell; the cell coordinates stay readable until the
    // next call.
    std::uint64_t keyOf(const Color<T, N> &target, const ColorBounds<T, N> &bounds) {
        std::uint64_t key = 0;
        for (int k = 0; k <= N; ++k) {
            cell_[k] = CellRule<T>::cell(target[k], k, bounds);
            key += cell_[k] * strides_[k];
        }
        return key;
    }

    std::uint32_t lookup(std::uint64_t key) const { return entries_[checked(key)]; }
    void store(std::uint64_t key, std::uint32_t index) { entries_[checked(key)] = index; }

    void forgetAll() {
        for (std::uint64_t i = 0; i < entryCount_; ++i) entries_[i] = kUnknown;
    }

    std::uint64_t entryCount() const noexcept { return entryCount_; }
    const std::array<std::uint32_t, N + 1> &dimensions() const noexcept { return dimensions_; }
    const std::array<std::uint32_t, N + 1> &lastCell() const noexcept { return cell_; }

private:
    struct FreeDeleter {
        void operator()(std::uint32_t *p) const noexcept { std::free(p); }
    };

    std::uint64_t checked(std::uint64_t key) const {
        if (key >= entryCount_) throw std::out_of_range("invalid vector<T> subscript");
        return key;
    }

    std::array<std::uint32_t, N + 1> dimensions_{};
    std::array<std::uint64_t, N + 1> strides_{};
    std::uint64_t entryCount_ = 0;
    std::unique_ptr<std::uint32_t[], FreeDeleter> entries_;
    std::array<std::uint32_t, N + 1> cell_{};
};

}  // namespace ColorUtilities
