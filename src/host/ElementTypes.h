#pragma once

#include <cstdint>

#include "quorbel/QuorbelTypes.h"

namespace OstrelUtils {

// The kernel's type numbers for each element type the library handles.
// kImageType is MImage_Type_Undefined for the types that only raw arrays carry.
template <typename T>
struct ElementType;

template <>
struct ElementType<signed char> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Bit;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_Bit8;
};
template <>
struct ElementType<unsigned char> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Bit8;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_UBit8;
};
template <>
struct ElementType<unsigned short> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Bit16;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_UBit16;
};
template <>
struct ElementType<float> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Real32;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_Real32;
};
template <>
struct ElementType<double> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Real64;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_Real64;
};
template <>
struct ElementType<unsigned int> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Undefined;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_UBit32;
};
template <>
struct ElementType<std::uint64_t> {
    static constexpr MImage_Data_Type kImageType = MImage_Type_Undefined;
    static constexpr MRawArray_Data_Type kRawArrayType = MRawArray_Type_UBit64;
};

}  // namespace OstrelUtils
