#pragma once

#include <cstdint>
#include <type_traits>

namespace ColorUtilities {

// What differs between the element types in the colour algorithms. The
// integer types have a fixed value range; the real types take theirs from the
// pixels. Differences are taken in the promoted type (int for the integer
// types), which is also the type of the damping range.
template <typename T>
struct SampleTraits {
    static constexpr bool kFixedRange = false;
    using Difference = T;
};

template <>
struct SampleTraits<signed char> {
    static constexpr bool kFixedRange = true;
    static constexpr signed char kMax = 1;
    using Difference = int;
};

// 8- and 16-bit samples: every value of their bits.
template <typename T>
struct UnsignedSampleTraits {
    static constexpr bool kFixedRange = true;
    static constexpr std::uint32_t kSampleBits = 8 * sizeof(T);
    static constexpr T kMax = static_cast<T>((std::uint32_t{1} << kSampleBits) - 1);
    using Difference = int;
};

template <>
struct SampleTraits<unsigned char> : UnsignedSampleTraits<unsigned char> {};
template <>
struct SampleTraits<unsigned short> : UnsignedSampleTraits<unsigned short> {};

}  // namespace ColorUtilities
