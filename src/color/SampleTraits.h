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

template <>
struct SampleTraits<unsigned char> {
    static constexpr bool kFixedRange = true;
    static constexpr unsigned char kMax = 255;
    static constexpr std::uint32_t kSampleBits = 8;
    using Difference = int;
};

template <>
struct SampleTraits<unsigned short> {
    static constexpr bool kFixedRange = true;
    static constexpr unsigned short kMax = 65535;
    static constexpr std::uint32_t kSampleBits = 16;
    using Difference = int;
};

}  // namespace ColorUtilities
