#include "TypeNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <complex>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

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

const std::vector<RawElementType> kRawTypes = {
    {MRawArray_Type_Bit8, "int8", "Integer8"},       {MRawArray_Type_UBit8, "uint8", "UnsignedInteger8"},
    {MRawArray_Type_Bit16, "int16", "Integer16"},    {MRawArray_Type_UBit16, "uint16", "UnsignedInteger16"},
    {MRawArray_Type_Bit32, "int32", "Integer32"},    {MRawArray_Type_UBit32, "uint32", "UnsignedInteger32"},
    {MRawArray_Type_Bit64, "int64", "Integer64"},    {MRawArray_Type_UBit64, "uint64", "UnsignedInteger64"},
    {MRawArray_Type_Real32, "real32", "Real32"},     {MRawArray_Type_Real64, "real64", "Real64"},
    {MRawArray_Type_Complex_Real32, "complex-real32", "ComplexReal32"},
    {MRawArray_Type_Complex_Real64, "complex-real64", "ComplexReal64"},
};

std::invalid_argument badElement(std::string_view token, std::string_view typeName) {
    return std::invalid_argument("'" + std::string(token) + "' is not a valid " +
                                 std::string(typeName) + " element");
}

template <typename T>
void appendBytes(const T &value, std::vector<std::byte> &out) {
    const auto *bytes = reinterpret_cast<const std::byte *>(&value);
    out.insert(out.end(), bytes, bytes + sizeof value);
}

template <typename T>
T load(const void *element) {
    T value;
    std::memcpy(&value, element, sizeof value);
    return value;
}

template <typename Int>
std::optional<Int> parseInteger(std::string_view token) {
    if constexpr (std::is_signed_v<Int>) {
        auto wide = parseInt64(token);
        if (!wide || *wide < std::numeric_limits<Int>::min() || *wide > std::numeric_limits<Int>::max())
            return std::nullopt;
        return static_cast<Int>(*wide);
    } else {
        auto wide = parseUInt64(token);
        if (!wide || *wide > std::numeric_limits<Int>::max()) return std::nullopt;
        return static_cast<Int>(*wide);
    }
}

// RE, IMi, RE+IMi, RE-IMi; the sign that splits the parts is the last one
// that does not belong to an exponent.
std::optional<std::complex<double>> parseComplex(std::string_view token) {
    if (token.empty()) return std::nullopt;
    if (token.back() != 'i') {
        auto re = parseReal(token);
        return re ? std::optional(std::complex<double>(*re, 0)) : std::nullopt;
    }
    std::string_view body = token.substr(0, token.size() - 1);
    std::size_t split = std::string_view::npos;
    for (std::size_t i = body.size(); i-- > 1;) {
        if ((body[i] == '+' || body[i] == '-') && body[i - 1] != 'e' && body[i - 1] != 'E') {
            split = i;
            break;
        }
    }
    std::string_view imText = split == std::string_view::npos ? body : body.substr(split);
    auto re = split == std::string_view::npos ? std::optional(0.0) : parseReal(body.substr(0, split));
    auto im = (imText == "+" || imText == "-" || imText.empty())
                  ? std::optional(imText == "-" ? -1.0 : 1.0)
                  : parseReal(imText);
    if (!re || !im) return std::nullopt;
    return std::complex<double>(*re, *im);
}

template <typename Real>
std::string formatComplex(const void *element) {
    auto parts = load<std::complex<Real>>(element);
    return "Complex[" + formatReal(parts.real()) + ", " + formatReal(parts.imag()) + "]";
}

template <typename Int>
void appendInteger(const RawElementType &type, std::string_view token, std::vector<std::byte> &out) {
    auto value = parseInteger<Int>(token);
    if (!value) throw badElement(token, type.shortName);
    appendBytes(*value, out);
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

const std::vector<RawElementType> &rawElementTypes() { return kRawTypes; }

std::optional<RawElementType> findRawElementType(std::string_view name) {
    auto number = parseInt64(name);
    for (const RawElementType &type : kRawTypes) {
        if (name == type.shortName || name == type.kernelName || (number && *number == type.id))
            return type;
    }
    return std::nullopt;
}

const RawElementType &rawElementType(MRawArray_Data_Type id) {
    for (const RawElementType &type : kRawTypes)
        if (type.id == id) return type;
    throw std::invalid_argument("unknown raw-array element type " + std::to_string(id));
}

void appendElement(MRawArray_Data_Type id, std::string_view token, std::vector<std::byte> &out) {
    const RawElementType &type = rawElementType(id);
    switch (id) {
    case MRawArray_Type_Bit8: return appendInteger<std::int8_t>(type, token, out);
    case MRawArray_Type_UBit8: return appendInteger<std::uint8_t>(type, token, out);
    case MRawArray_Type_Bit16: return appendInteger<std::int16_t>(type, token, out);
    case MRawArray_Type_UBit16: return appendInteger<std::uint16_t>(type, token, out);
    case MRawArray_Type_Bit32: return appendInteger<std::int32_t>(type, token, out);
    case MRawArray_Type_UBit32: return appendInteger<std::uint32_t>(type, token, out);
    case MRawArray_Type_Bit64: return appendInteger<std::int64_t>(type, token, out);
    case MRawArray_Type_UBit64: return appendInteger<std::uint64_t>(type, token, out);
    case MRawArray_Type_Real32:
    case MRawArray_Type_Real64: {
        auto value = parseReal(token);
        if (!value) throw badElement(token, type.shortName);
        if (id == MRawArray_Type_Real32) return appendBytes(static_cast<float>(*value), out);
        return appendBytes(*value, out);
    }
    case MRawArray_Type_Complex_Real32:
    case MRawArray_Type_Complex_Real64: {
        auto value = parseComplex(token);
        if (!value) throw badElement(token, type.shortName);
        if (id == MRawArray_Type_Complex_Real32) return appendBytes(std::complex<float>(*value), out);
        return appendBytes(*value, out);
    }
    default: throw badElement(token, type.shortName);
    }
}

std::string formatElement(MRawArray_Data_Type id, const void *element) {
    switch (id) {
    case MRawArray_Type_Bit8: return std::to_string(load<std::int8_t>(element));
    case MRawArray_Type_UBit8: return std::to_string(load<std::uint8_t>(element));
    case MRawArray_Type_Bit16: return std::to_string(load<std::int16_t>(element));
    case MRawArray_Type_UBit16: return std::to_string(load<std::uint16_t>(element));
    case MRawArray_Type_Bit32: return std::to_string(load<std::int32_t>(element));
    case MRawArray_Type_UBit32: return std::to_string(load<std::uint32_t>(element));
    case MRawArray_Type_Bit64: return std::to_string(load<std::int64_t>(element));
    case MRawArray_Type_UBit64: return std::to_string(load<std::uint64_t>(element));
    case MRawArray_Type_Real32: return formatReal(load<float>(element));
    case MRawArray_Type_Real64: return formatReal(load<double>(element));
    case MRawArray_Type_Complex_Real32: return formatComplex<float>(element);
    case MRawArray_Type_Complex_Real64: return formatComplex<double>(element);
    default: throw std::invalid_argument("unknown raw-array element type " + std::to_string(id));
    }
}

void appendTensorElement(MTensor_Data_Type type, std::string_view token, std::vector<std::byte> &out) {
    if (type == MTensor_Type_Integer) {
        auto value = parseInt64(token);
        if (!value) throw badElement(token, "integer tensor");
        return appendBytes(static_cast<mint>(*value), out);
    }
    auto value = parseReal(token);
    if (!value) throw badElement(token, "real tensor");
    appendBytes(static_cast<mreal>(*value), out);
}

std::string formatTensorElement(MTensor_Data_Type type, const void *element) {
    if (type == MTensor_Type_Integer) return std::to_string(load<mint>(element));
    return formatReal(load<mreal>(element));
}

}  // namespace tarvex_cli
