#pragma once

#include <gif_lib.h>

#include <cstddef>
#include <memory>
#include <new>
#include <span>

namespace GifExport {

struct ColorMapDeleter {
    void operator()(ColorMapObject *map) const noexcept { GifFreeMapObject(map); }
};
using ColorMapOwner = std::unique_ptr<ColorMapObject, ColorMapDeleter>;

// giflib's maps hold a power of two of colours, at least two.
inline int colorMapSizeFor(std::size_t colors) {
    int size = 2;
    while (static_cast<std::size_t>(size) < colors) size *= 2;
    return size;
}

// A map of `size` entries whose first ones are `colors`; the rest stay as
// giflib makes them (black).
inline ColorMapOwner makeColorMap(int size, std::span<const GifColorType> colors = {}) {
    ColorMapOwner map(GifMakeMapObject(size, nullptr));
    if (!map) throw std::bad_alloc();
    for (std::size_t i = 0; i < colors.size() && i < static_cast<std::size_t>(size); ++i)
        map->Colors[i] = colors[i];
    return map;
}

inline bool sameColor(const GifColorType &a, const GifColorType &b) {
    return a.Red == b.Red && a.Green == b.Green && a.Blue == b.Blue;
}

inline bool sameColorMap(const ColorMapObject *a, const ColorMapObject *b) {
    if (a == nullptr || b == nullptr || a->ColorCount != b->ColorCount) return false;
    for (int i = 0; i < a->ColorCount; ++i)
        if (!sameColor(a->Colors[i], b->Colors[i])) return false;
    return true;
}

// The first entry equal to `color`, or -1.
inline int findColor(const ColorMapObject *map, const GifColorType &color) {
    if (map == nullptr) return -1;
    for (int i = 0; i < map->ColorCount; ++i)
        if (sameColor(map->Colors[i], color)) return i;
    return -1;
}

}  // namespace GifExport
