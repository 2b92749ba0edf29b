#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorbel/QuorbelTypes.h"
#include "refhost/refhost.h"

// The names of sample types, colour spaces and raw-array element types, as
// the tool reads them and as it prints them.

namespace tarvex_cli {

// Sample types by the names the tool reads (bit, byte, bit16, real32, real64;
// any letter case) and prints ("Bit", "Byte", ...).
std::optional<MImage_Data_Type> findImageType(std::string_view name);
const char *imageTypeName(MImage_Data_Type type);

// Colour spaces by name (gray, rgb, hsb, cmyk, xyz, luv, lab, lch, auto) or
// by number; printed as "Gray", "RGB", ..., "Automatic".
std::optional<MImage_CS_Type> findColorSpace(std::string_view name);
std::string colorSpaceName(MImage_CS_Type space);

// The colour space that fits a channel count when none is named: grey for
// one colour channel, RGB for three, CMYK for four, otherwise automatic.
MImage_CS_Type defaultColorSpace(mint channels, bool alpha);

// The colour space as the tool reads it back ("rgb", "auto", or the number).
std::string colorSpaceKey(MImage_CS_Type space);

// What the tool needs to know about a raw-array element type: how users name
// it, how the kernel names it, and how its numbers are read and written.
struct RawElementType {
    MRawArray_Data_Type id;
    const char *shortName;   // on the command line: "uint8"
    const char *kernelName;  // in printed results: "UnsignedInteger8"
    std::size_t size() const { return rh_raw_array_element_size(id); }  // bytes per element
};

// Accepts the short name, the kernel's name or the type number.
std::optional<RawElementType> findRawElementType(std::string_view name);
const RawElementType &rawElementType(MRawArray_Data_Type id);
const std::vector<RawElementType> &rawElementTypes();

// Appends the bytes of one element written as text: an integer within the
// type's range, a real, or for the complex types RE, IMi, RE+IMi or RE-IMi.
// Throws std::invalid_argument naming the token and the type.
void appendElement(MRawArray_Data_Type type, std::string_view token, std::vector<std::byte> &out);

// One element in the kernel's input form.
std::string formatElement(MRawArray_Data_Type type, const void *element);

// Integer and real tensors hold mint and mreal.
void appendTensorElement(MTensor_Data_Type type, std::string_view token, std::vector<std::byte> &out);
std::string formatTensorElement(MTensor_Data_Type type, const void *element);

}  // namespace tarvex_cli
