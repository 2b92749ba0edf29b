#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace GifImport {

// Four bytes in memory order red, green, blue, alpha, so that a row of packed
// colours can be copied into an interleaved RGBA image as it stands.
using PackedColor = std::uint32_t;

using ColorBytes = std::array<std::uint8_t, 4>;

constexpr PackedColor packColor(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                std::uint8_t alpha) {
    return std::bit_cast<PackedColor>(ColorBytes{red, green, blue, alpha});
}

constexpr ColorBytes colorBytes(PackedColor color) { return std::bit_cast<ColorBytes>(color); }

constexpr std::uint8_t red(PackedColor color) { return colorBytes(color)[0]; }
constexpr std::uint8_t green(PackedColor color) { return colorBytes(color)[1]; }
constexpr std::uint8_t blue(PackedColor color) { return colorBytes(color)[2]; }
constexpr std::uint8_t alpha(PackedColor color) { return colorBytes(color)[3]; }

constexpr PackedColor withAlpha(PackedColor color, std::uint8_t newAlpha) {
    ColorBytes bytes = colorBytes(color);
    bytes[3] = newAlpha;
    return std::bit_cast<PackedColor>(bytes);
}

using Palette = std::vector<PackedColor>;

}  // namespace GifImport
