#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "quorbel/QuorbelTypes.h"

namespace tarvex_cli {

// A rectangular nested list such as {{1, 2, 3}, {4, 5, 6}}: its dimensions
// ({2, 3}) and its elements in row-major order, still as text, since only the
// element type decides how to read them.
struct NestedList {
    std::vector<mint> dimensions;
    std::vector<std::string> elements;
};

// Throws std::invalid_argument for unbalanced braces, ragged lists, empty
// elements and text after the list. {} is a list of length 0.
NestedList parseNestedList(std::string_view text);

// The other way: row-major elements of `elementSize` bytes as a nested list,
// each written by `formatOne`, e.g. {{1, 2}, {3, 4}}.
std::string formatNestedList(const std::vector<mint> &dimensions, const void *elements, std::size_t elementSize,
                             const std::function<std::string(const void *)> &formatOne);

}  // namespace tarvex_cli
