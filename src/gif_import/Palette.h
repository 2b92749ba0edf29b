#pragma once

#include <gif_lib.h>

#include "gif_import/PackedColor.h"

namespace GifImport {

// The colours of a giflib colour map, every one opaque.
Palette paletteFromColorMap(const ColorMapObject &map);

}  // namespace GifImport
