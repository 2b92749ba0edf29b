#include "DitherPalette.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>

#include "Command.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "NumberText.h"

namespace tarvex_cli {
namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const auto end = text.find(separator, start);
        parts.push_back(trimmed(text.substr(start, end - start)));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

// "#rrggbb": two hex digits a channel, one to four channels.
DitherColor parseHexColor(std::string_view text) {
    const std::string_view digits = text.substr(1);
    if (digits.empty() || digits.size() % 2 != 0 || digits.size() > 8)
        throw std::invalid_argument("'" + std::string(text) + "' is not #rrggbb");
    DitherColor color{{}, 255};
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::string pair(digits.substr(i, 2));
        if (pair.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            throw std::invalid_argument("'" + std::string(text) + "' is not #rrggbb");
        color.values.push_back(std::stoi(pair, nullptr, 16));
    }
    return color;
}

DitherColor parseNumberColor(std::string_view text) {
    DitherColor color;
    for (std::string_view token : split(text, ',')) {
        const auto value = parseReal(token);
        if (!value || !std::isfinite(*value))
            throw std::invalid_argument("'" + std::string(token) + "' is not a number");
        color.values.push_back(*value);
    }
    return color;
}

// `tarvex palette` prints "global palette: 4 colours" above its colours, and
// "frame 2 local palette: 2 colours" above each local palette.
bool isPaletteHeading(std::string_view line) {
    return std::isalpha(static_cast<unsigned char>(line.front())) && line.find("palette") != std::string_view::npos;
}

// "  3  #ff8000  255 128   0" as `tarvex palette` prints a colour: the hex
// form after the index; any other line is a colour as it stands.
std::string_view colorOfListing(std::string_view line) {
    const std::size_t hex = line.find('#');
    if (hex == std::string_view::npos || hex == 0) return line;
    if (trimmed(line.substr(0, hex)).find_first_not_of("0123456789") != std::string_view::npos) return line;
    return trimmed(line.substr(hex, line.find_first_of(" \t", hex) - hex));
}

DitherColor parseColor(std::string_view text) {
    if (text.empty()) throw std::invalid_argument("an empty colour");
    return text.front() == '#' ? parseHexColor(text) : parseNumberColor(text);
}

// A colour's value as a sample of the image's type.
double sampleValue(const DitherColor &color, double value, MImage_Data_Type type) {
    if (color.fullScale == 0) return value;
    const double unit = value / color.fullScale;
    switch (type) {
        case MImage_Type_Bit:
            return unit >= 0.5 ? 1 : 0;
        case MImage_Type_Bit8:
            return std::round(unit * 255);
        case MImage_Type_Bit16:
            return std::round(unit * 65535);
        default:
            return unit;
    }
}

template <typename T>
void storeSample(void *data, std::size_t i, double value, double low, double high) {
    if (value < low || value > high || value != std::floor(value))
        throw CliError("palette value " + formatReal(value) + " does not fit the image's samples");
    static_cast<T *>(data)[i] = static_cast<T>(value);
}

void store(void *data, std::size_t i, double value, MImage_Data_Type type) {
    switch (type) {
        case MImage_Type_Bit:
            return storeSample<signed char>(data, i, value, 0, 1);
        case MImage_Type_Bit8:
            return storeSample<std::uint8_t>(data, i, value, 0, 255);
        case MImage_Type_Bit16:
            return storeSample<std::uint16_t>(data, i, value, 0, 65535);
        case MImage_Type_Real32:
            static_cast<float *>(data)[i] = static_cast<float>(value);
            return;
        default:
            static_cast<double *>(data)[i] = value;
            return;
    }
}

MRawArray_Data_Type rawArrayTypeOf(MImage_Data_Type type) {
    switch (type) {
        case MImage_Type_Bit:
            return MRawArray_Type_Bit8;
        case MImage_Type_Bit8:
            return MRawArray_Type_UBit8;
        case MImage_Type_Bit16:
            return MRawArray_Type_UBit16;
        case MImage_Type_Real32:
            return MRawArray_Type_Real32;
        default:
            return MRawArray_Type_Real64;
    }
}

// A grey level stands for all three channels of an RGB image.
std::vector<DitherColor> fittedColors(std::vector<DitherColor> colors, mint channels) {
    for (DitherColor &color : colors) {
        if (color.grey && channels == 3) color.values.assign(3, color.values.front());
        if (static_cast<mint>(color.values.size()) != channels)
            throw CliError("palette colours need " + countOf(channels, "channel") + " like the image, one has " +
                           std::to_string(color.values.size()));
    }
    return colors;
}

}  // namespace

std::vector<DitherColor> parseDitherColors(std::string_view text) {
    std::vector<DitherColor> colors;
    const bool hexList = text.find(';') == std::string_view::npos && trimmed(text).starts_with('#');
    for (std::string_view item : split(text, hexList ? ',' : ';'))
        if (!item.empty()) colors.push_back(parseColor(item));
    return colors;
}

std::vector<DitherColor> parseColorLines(std::string_view text) {
    std::vector<DitherColor> colors;
    std::size_t number = 0;
    for (std::string_view line : split(text, '\n')) {
        ++number;
        if (line.empty()) continue;
        if (isPaletteHeading(line)) {
            if (!colors.empty()) break;
            continue;
        }
        try {
            colors.push_back(parseColor(colorOfListing(line)));
        } catch (const std::invalid_argument &error) {
            throw std::invalid_argument(std::to_string(number) + ": " + error.what());
        }
    }
    return colors;
}

MRawArray makeColorMap(const std::vector<DitherColor> &given, MImage_Data_Type type, mint channels) {
    const std::vector<DitherColor> colors = fittedColors(given, channels);
    const mint dimensions[] = {static_cast<mint>(colors.size()), channels};
    MRawArray map = nullptr;
    if (hostTable()->rawArrayFunctions->create(rawArrayTypeOf(type), 2, dimensions, &map) != 0)
        throw CliError("the host cannot make a colour map of " + std::to_string(colors.size()) + " colours");
    void *data = hostTable()->rawArrayFunctions->getData(map);
    try {
        for (std::size_t i = 0; i < colors.size(); ++i)
            for (mint k = 0; k < channels; ++k)
                store(data, i * channels + k, sampleValue(colors[i], colors[i].values[k], type), type);
    } catch (...) {
        hostTable()->rawArrayFunctions->free(map);
        throw;
    }
    return map;
}

}  // namespace tarvex_cli
