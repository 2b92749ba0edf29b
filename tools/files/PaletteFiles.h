#pragma once

#include <string>
#include <vector>

#include "DitherPalette.h"

namespace tarvex_cli {

// The --palette argument: a named palette (bw, grey16, web, ...), a list of
// colours such as "#ff0000,#00ff00" or "255,0,0;0,255,0", or a file: a text
// file of colours (one a line, or what `tarvex palette` prints), an image
// whose distinct colours form the palette, or a GIF file whose global
// palette it is (FILE.gif:N: the palette that frame N draws with).
// Throws CliError.
std::vector<DitherColor> readDitherPalette(const std::string &argument);

}  // namespace tarvex_cli
