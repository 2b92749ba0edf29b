#include "NamedPalettes.h"

#include <cmath>

namespace tarvex_cli {
namespace {

double level(int step, int steps) { return std::round(255.0 * step / (steps - 1)); }

std::vector<DitherColor> greyRamp(int levels) {
    std::vector<DitherColor> colors;
    for (int i = 0; i < levels; ++i) colors.push_back({{level(i, levels)}, 255, true});
    return colors;
}

std::vector<DitherColor> colorCube(int reds, int greens, int blues) {
    std::vector<DitherColor> colors;
    for (int r = 0; r < reds; ++r)
        for (int g = 0; g < greens; ++g)
            for (int b = 0; b < blues; ++b)
                colors.push_back({{level(r, reds), level(g, greens), level(b, blues)}, 255});
    return colors;
}

}  // namespace

std::optional<std::vector<DitherColor>> namedPalette(std::string_view name) {
    if (name == "bw") return greyRamp(2);
    for (int levels : {4, 16, 256})
        if (name == "grey" + std::to_string(levels) || name == "gray" + std::to_string(levels))
            return greyRamp(levels);
    if (name == "web") return colorCube(6, 6, 6);
    if (name == "332") return colorCube(8, 8, 4);
    return std::nullopt;
}

const char *const kNamedPaletteList = "bw, grey4, grey16, grey256, web (216 colours), 332 (256 colours)";

}  // namespace tarvex_cli
