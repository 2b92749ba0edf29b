#pragma once

#include <string>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// A palette raw array ({colours, channels}) as text that --palette reads
// back: one colour a line, "#rrggbb" for 8-bit samples, numbers separated
// by commas otherwise. Rows that only repeat the last colour, which the
// plug-in adds when a method finds fewer colours than asked for, are left
// out.
std::string paletteText(MRawArray palette);

}  // namespace tarvex_cli
