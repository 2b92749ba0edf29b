#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// One palette colour as the user wrote it. Hex colours and colours taken from
// a PNG file are on a scale (255 or 65535) and are rescaled to the image's
// sample type; plain numbers are samples of that type as they stand.
struct DitherColor {
    std::vector<double> values;
    double fullScale = 0;  // 0: plain samples
    bool grey = false;     // one level that stands for every colour channel
};

// One colour a line; the lines `tarvex palette` prints are read too, their
// first palette only. Throws std::invalid_argument that starts with the
// line's number: "2: 'x' is not a number".
std::vector<DitherColor> parseColorLines(std::string_view text);

// Parses a list of colours; throws std::invalid_argument.
std::vector<DitherColor> parseDitherColors(std::string_view text);

// The colours as a new colours x channels raw array of the image's sample
// type, for DitherImage's colour map. Throws CliError when a colour has the
// wrong channel count or a value the type cannot hold.
MRawArray makeColorMap(const std::vector<DitherColor> &colors, MImage_Data_Type type, mint channels);

}  // namespace tarvex_cli
