#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "DitherPalette.h"

namespace tarvex_cli {

// The palettes users expect by name: bw, grey4, grey16, grey256 (also
// spelled gray), web (the 216 colours of six levels a channel) and 332
// (eight levels of red and green, four of blue). Grey palettes serve grey
// and RGB images alike.
std::optional<std::vector<DitherColor>> namedPalette(std::string_view name);

extern const char *const kNamedPaletteList;  // for help texts

}  // namespace tarvex_cli
