#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

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
