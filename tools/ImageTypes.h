#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "quorbel/QuorbelTypes.h"

namespace tarvex_cli {

// Sample types by the names the tool reads (bit, byte, bit16, real32, real64;
// any letter case) and prints ("Bit", "Byte", ...).
std::optional<MImage_Data_Type> findImageType(std::string_view name);
const char *imageTypeName(MImage_Data_Type type);

// Colour spaces by name (gray, rgb, hsb, cmyk, xyz, luv, lab, lch, auto) or
// by number; printed as "Gray", "RGB", ..., "Automatic".
std::optional<MImage_CS_Type> findColorSpace(std::string_view name);
std::string colorSpaceName(MImage_CS_Type space);

// The colour space that fits a channel count when none is named: grey for
// one colour channel, RGB for three, CMYK for four, otherwise automatic.
MImage_CS_Type defaultColorSpace(mint channels, bool alpha);

}  // namespace tarvex_cli

namespace tarvex_cli {

// The colour space as the tool reads it back ("rgb", "auto", or the number).
std::string colorSpaceKey(MImage_CS_Type space);

}  // namespace tarvex_cli
