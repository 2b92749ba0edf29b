#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <type_traits>
#include <variant>

#include "color/Color.h"

namespace ColorUtilities {

// Where a mapped slice goes: each pixel's chosen colour (N+1 samples of the
// image's type) or its palette index (one element of an index array). The
// kind is chosen once per slice, so that the scan loop writes without asking.
template <typename T, int N>
struct ColourWriter {
    T *out;
    void operator()(std::size_t pixel, std::uint32_t, const std::array<T, N + 1> &chosen) const {
        T *samples = out + pixel * (N + 1);
        for (int k = 0; k <= N; ++k) samples[k] = chosen[k];
    }
};

template <typename Index>
struct IndexWriter {
    Index *out;
    template <class Samples>
    void operator()(std::size_t pixel, std::uint32_t index, const Samples &) const {
        out[pixel] = static_cast<Index>(index);
    }
};

// The index arrays' element types are the host's unsigned raw-array types.
template <typename T, int N>
using SliceOutput =
    std::variant<ColourWriter<T, N>, IndexWriter<unsigned char>, IndexWriter<unsigned short>,
                 IndexWriter<unsigned int>, IndexWriter<std::uint64_t>>;

template <typename T, int N, typename Out>
SliceOutput<T, N> sliceOutput(Out *out, bool writeColours) {
    constexpr bool kColours = std::is_same_v<Out, T>;
    constexpr bool kIndices = std::is_constructible_v<SliceOutput<T, N>, IndexWriter<Out>>;
    static_assert(kColours || kIndices, "colours go to the image's type, indices to unsigned arrays");
    if constexpr (kColours)
        if (writeColours) return ColourWriter<T, N>{out};
    if constexpr (kIndices)
        if (!writeColours) return IndexWriter<Out>{out};
    throw std::logic_error("colours go to the image's type, indices to unsigned arrays");
}

}  // namespace ColorUtilities
