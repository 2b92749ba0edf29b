#pragma once

#include <cstdint>

#include "quorbel/QuorbelTypes.h"

namespace OstrelUtils {

// The kernel's type numbers for each element type the library handles.
// kImageType is MImage_Type_Undefined for the types that only raw arrays carry.
template <MImage_Data_Type Image, MRawArray_Data_Type RawArray>
struct TypeNumbers {
    static constexpr MImage_Data_Type kImageType = Image;
    static constexpr MRawArray_Data_Type kRawArrayType = RawArray;
};

template <typename T>
struct ElementType;

template <>
struct ElementType<signed char> : TypeNumbers<MImage_Type_Bit, MRawArray_Type_Bit8> {};
template <>
struct ElementType<unsigned char> : TypeNumbers<MImage_Type_Bit8, MRawArray_Type_UBit8> {};
template <>
struct ElementType<unsigned short> : TypeNumbers<MImage_Type_Bit16, MRawArray_Type_UBit16> {};
template <>
struct ElementType<float> : TypeNumbers<MImage_Type_Real32, MRawArray_Type_Real32> {};
template <>
struct ElementType<double> : TypeNumbers<MImage_Type_Real64, MRawArray_Type_Real64> {};
template <>
struct ElementType<unsigned int> : TypeNumbers<MImage_Type_Undefined, MRawArray_Type_UBit32> {};
template <>
struct ElementType<std::uint64_t> : TypeNumbers<MImage_Type_Undefined, MRawArray_Type_UBit64> {};

}  // namespace OstrelUtils
