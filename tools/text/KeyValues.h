#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quorbel/QuorbelTypes.h"

namespace tarvex_cli {

// "a=1,b,c=x" -> {a, 1}, {b, ""}, {c, x}. Throws std::invalid_argument for an
// empty item or a repeated key.
struct KeyValue {
    std::string key;
    std::string value;
    bool hasValue;
};
std::vector<KeyValue> splitKeyValues(std::string_view text);

// A whole number of at least `minimum`, for the option named `key`.
mint parseCount(const KeyValue &option, mint minimum);

// "2x3x4" -> {2, 3, 4}; every extent at least 0.
std::vector<mint> parseDimensions(std::string_view text);

// The product of the extents times `elementSize`; throws std::invalid_argument
// when it overflows.
std::size_t checkedByteCount(const std::vector<mint> &extents, std::size_t elementSize);

}  // namespace tarvex_cli
