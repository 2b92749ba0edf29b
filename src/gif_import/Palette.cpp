#include "gif_import/Palette.h"

namespace GifImport {

Palette paletteFromColorMap(const ColorMapObject &map) {
    Palette palette;
    palette.reserve(static_cast<std::size_t>(map.ColorCount));
    for (int i = 0; i < map.ColorCount; ++i) {
        const GifColorType &c = map.Colors[i];
        palette.push_back(packColor(c.Red, c.Green, c.Blue, 255));
    }
    return palette;
}

}  // namespace GifImport
