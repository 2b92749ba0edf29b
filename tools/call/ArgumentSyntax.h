#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "RawSampleFile.h"
#include "quorbel/QuorbelTypes.h"

namespace tarvex_cli {

// The arguments of `tarvex call`, as read from the command line and before
// any host object exists.

struct StringValue {
    std::string bytes;
};

struct PngImage {
    std::string path;
};

struct RawImage {
    std::string path;
    RawImageLayout layout;
};

// The elements of a raw array or a tensor: given inline, already converted
// to the element type, or named by a file to be read when the call is made.
struct ArrayElements {
    std::vector<mint> dimensions;  // for a file without dims=: found from its size
    std::vector<std::byte> inlineBytes;
    std::optional<std::string> file;
};

struct RawArrayValue {
    MRawArray_Data_Type type;
    ArrayElements elements;
};

struct TensorValue {
    MTensor_Data_Type type;
    ArrayElements elements;
};

using Argument = std::variant<mint, mreal, bool, StringValue, PngImage, RawImage, RawArrayValue, TensorValue>;

// Reads one argument. Throws std::invalid_argument with a message that says
// what is wrong, without repeating the argument itself.
Argument parseArgument(std::string_view text);

// The syntax, for `tarvex call --help`.
extern const char *const kArgumentSyntaxHelp;

}  // namespace tarvex_cli
