#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "color/Palette.h"

namespace ColorUtilities {

// A colour repeated at a higher palette index never wins a nearest-colour
// search: at equal distance and equal channel differences the lower index
// does. Palettes picked from pictures repeat colours often, so the searches
// index each colour once, under its first index.
struct FirstOfEachColor {
    std::vector<std::uint32_t> kept;    // the first index of each colour, ordered by colour
    std::vector<std::uint32_t> twinOf;  // for every palette index, the kept index of its colour
};

// Samples compare with ==, so zeros of either sign are one colour, as they
// are to the search.
template <typename T, int N>
FirstOfEachColor firstOfEachColor(const Palette<T, N> &palette) {
    const auto &colors = palette.colors;
    std::vector<std::uint32_t> order(colors.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
        for (int k = 0; k <= N; ++k)
            if (colors[a][k] != colors[b][k]) return colors[a][k] < colors[b][k];
        return a < b;
    });
    FirstOfEachColor result{{}, std::vector<std::uint32_t>(colors.size())};
    for (const std::uint32_t i : order) {
        if (result.kept.empty() || colors[i].values != colors[result.kept.back()].values) result.kept.push_back(i);
        result.twinOf[i] = result.kept.back();
    }
    return result;
}

}  // namespace ColorUtilities
