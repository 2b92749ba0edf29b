#include "ImageTypes.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "NumberText.h"

namespace tarvex_cli {
namespace {

struct Named {
    int value;
    const char *key;    // lower case, as typed
    const char *label;  // as printed
};

constexpr std::array kImageTypes{
    Named{MImage_Type_Bit, "bit", "Bit"},          Named{MImage_Type_Bit8, "byte", "Byte"},
    Named{MImage_Type_Bit16, "bit16", "Bit16"},    Named{MImage_Type_Real32, "real32", "Real32"},
    Named{MImage_Type_Real64, "real64", "Real64"},
};

constexpr std::array kColorSpaces{
    Named{MImage_CS_Automatic, "auto", "Automatic"}, Named{MImage_CS_Gray, "gray", "Gray"},
    Named{MImage_CS_RGB, "rgb", "RGB"},              Named{MImage_CS_HSB, "hsb", "HSB"},
    Named{MImage_CS_CMYK, "cmyk", "CMYK"},           Named{MImage_CS_XYZ, "xyz", "XYZ"},
    Named{MImage_CS_LUV, "luv", "LUV"},              Named{MImage_CS_LAB, "lab", "LAB"},
    Named{MImage_CS_LCH, "lch", "LCH"},
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

template <std::size_t Size>
const Named *byKey(const std::array<Named, Size> &table, std::string_view name) {
    const std::string key = lowerCase(name);
    for (const Named &entry : table)
        if (key == entry.key) return &entry;
    return nullptr;
}

template <std::size_t Size>
const Named *byValue(const std::array<Named, Size> &table, int value) {
    for (const Named &entry : table)
        if (entry.value == value) return &entry;
    return nullptr;
}

}  // namespace

std::optional<MImage_Data_Type> findImageType(std::string_view name) {
    if (const Named *entry = byKey(kImageTypes, name)) return static_cast<MImage_Data_Type>(entry->value);
    return std::nullopt;
}

const char *imageTypeName(MImage_Data_Type type) {
    const Named *entry = byValue(kImageTypes, type);
    return entry ? entry->label : "Undefined";
}

std::optional<MImage_CS_Type> findColorSpace(std::string_view name) {
    if (const Named *entry = byKey(kColorSpaces, name)) return static_cast<MImage_CS_Type>(entry->value);
    // Numbers beyond the named ones reach a plug-in's checks of odd colour
    // spaces; the range is what the enumeration itself can hold.
    if (auto number = parseInt64(name); number && *number >= -8 && *number <= 7)
        return static_cast<MImage_CS_Type>(*number);
    return std::nullopt;
}

std::string colorSpaceName(MImage_CS_Type space) {
    const Named *entry = byValue(kColorSpaces, space);
    return entry ? entry->label : std::to_string(static_cast<int>(space));
}

MImage_CS_Type defaultColorSpace(mint channels, bool alpha) {
    switch (channels - (alpha ? 1 : 0)) {
    case 1: return MImage_CS_Gray;
    case 3: return MImage_CS_RGB;
    case 4: return MImage_CS_CMYK;
    default: return MImage_CS_Automatic;
    }
}

std::string colorSpaceKey(MImage_CS_Type space) {
    const Named *entry = byValue(kColorSpaces, space);
    return entry ? entry->key : std::to_string(static_cast<int>(space));
}

}  // namespace tarvex_cli
