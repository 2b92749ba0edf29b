#pragma once

#include <cstdint>

#include "color/ColorDistance.h"
#include "color/Palette.h"

namespace ColorUtilities {

// Exhaustive search. Among colours at equal distance the one nearer in the
// first differing channel wins, then the lowest index. An empty palette
// answers 0, which the caller's checked access then refuses.
template <typename T, int N>
std::uint32_t nearestColorIndex(const Palette<T, N> &palette, const Color<T, N> &target) {
    const auto &colors = palette.colors;
    if (colors.empty()) return 0;
    std::uint32_t best = 0;
    double bestDistance = colorDistance(target, colors[0]);
    for (std::uint32_t i = 1; i < colors.size(); ++i) {
        const double distance = colorDistance(target, colors[i]);
        if (distance < bestDistance ||
            (distance == bestDistance && closerByChannels(colors[i], colors[best], target))) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

}  // namespace ColorUtilities
