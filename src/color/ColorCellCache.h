#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "color/Color.h"
#include "color/ColorBounds.h"
#include "color/NumericConversions.h"
#include "color/Palette.h"
#include "color/SampleTraits.h"
#include "color/ZeroedArray.h"
#include "host/MemoryBudget.h"

namespace ColorUtilities {

// Which cell of its channel a sample falls in.
template <typename T>
struct CellRule {
    // Real samples: cells of cellWidth counted from min, the lower edge of
    // each cell belonging to the cell below.
    template <int N>
    static std::uint32_t cell(T sample, int k, const ColorBounds<T, N> &bounds) {
        return static_cast<std::uint32_t>(wideCell(sample, k, bounds));
    }

    // The cell before it is cut to 32 bits: samples outside the box (NaN,
    // infinities) land far outside every table.
    template <int N>
    static std::int64_t wideCell(T sample, int k, const ColorBounds<T, N> &bounds) {
        if (sample == bounds.min[k] || bounds.max[k] == bounds.min[k]) return bounds.lo;
        const double offset = static_cast<double>(sample - bounds.min[k]) / bounds.cellWidth[k];
        return toInt64Wrapping(std::ceil(offset) + bounds.lo - 1);
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
// channel, zero-filled and untouched until used, so that an unused cache
// costs no memory pages.
template <typename T, int N>
class ColorCellCache {
public:
    explicit ColorCellCache(std::uint32_t bits) {
        const std::uint64_t side = std::uint64_t{1} << bits;
        std::uint64_t count = 1;
        for (int k = N; k >= 0; --k) {
            strides_[k] = count;
            count *= side;
        }
        // Every entry is written when the cache is cleared: a table larger
        // than the machine can hold is refused before it is touched.
        OstrelUtils::requireTableBytes(OstrelUtils::saturatedProduct(count, sizeof(std::uint32_t)));
        entries_ = ZeroedArray<std::uint32_t>(count);
    }

    std::uint64_t keyOf(const Color<T, N> &target, const ColorBounds<T, N> &bounds) const {
        std::uint64_t key = 0;
        for (int k = 0; k <= N; ++k) key += CellRule<T>::cell(target[k], k, bounds) * strides_[k];
        return key;
    }

    std::uint32_t lookup(std::uint64_t key) const { return entries_[checked(key)]; }
    void store(std::uint64_t key, std::uint32_t index) { entries_[checked(key)] = index; }

    void forgetAll() { std::fill(entries_.begin(), entries_.end(), kUnknownIndex); }

    std::uint64_t entryCount() const noexcept { return entries_.size(); }

private:
    std::uint64_t checked(std::uint64_t key) const {
        if (key >= entries_.size()) throw std::out_of_range("invalid vector<T> subscript");
        return key;
    }

    std::array<std::uint64_t, N + 1> strides_{};
    ZeroedArray<std::uint32_t> entries_;
};

}  // namespace ColorUtilities
