#include "ColorExports.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "Command.h"
#include "HostTable.h"

namespace tarvex_cli {
namespace {

// -14 and -10 say only that the export failed. What the tool has not checked
// beforehand is, in practice, memory: for a quantizer, its tables.
CliError exportFailure(const std::string &name, int code) {
    const bool quantizer = name != "DitherImage" && name != "UniqueColors";
    return CliError(name + " failed with code " + std::to_string(code) + ": the plug-in could not work on this image" +
                    (quantizer ? " (the method's tables grow with --bits and the channels; a lower --bits needs "
                                 "less memory)"
                               : ""));
}

RhValue integer(mint value) { return {RH_INTEGER, {.integer = value}, 0}; }

RhValue string(const std::string &text) { return {RH_STRING, {.string = text.c_str()}, 0}; }

RhValue boolean(bool value) { return {RH_BOOLEAN, {.boolean = value}, 0}; }

RhValue call(const char *name, std::vector<RhValue> args, RhKind resultKind) {
    RhValue result{resultKind, {}, 0};
    const int code = rh_call(plugin(), name, mint(args.size()), args.data(), &result);
    if (code != 0) throw exportFailure(name, code);
    return result;
}

}  // namespace

long long bitsFor(MImage image, const QuantizeSettings &s) {
    if (s.bits) return *s.bits;
    const bool wu = s.method == 2;
    return wu && hostTable()->imageFunctions->getChannels(image) == 4 ? 5 : 6;
}

QuantizedImage quantizedImage(MImage image, const QuantizeSettings &s) {
    const RhValue result = call("GetQuantizedImage",
                                {{RH_IMAGE, {.image = image}, 0}, integer(s.colors), string(s.dither),
                                 integer(s.method), integer(bitsFor(image, s))},
                                RH_IMAGE);
    QuantizedImage quantized;
    quantized.image = result.value.image;
    quantized.unchanged = quantized.image == image;
    if (!quantized.unchanged) quantized.owned.reset(quantized.image);
    return quantized;
}

bool quantizingKeeps(MImage image, long long colors) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    // The plug-in counts a slice's pixels in 32 bits.
    const auto perSlice = static_cast<std::uint32_t>(images->getRowCount(image) * images->getColumnCount(image));
    if (colors >= static_cast<long long>(perSlice) * images->getSliceCount(image)) return true;
    return uniqueColors(image, false) <= colors;
}

namespace {

template <typename Index>
void lookUpColours(const Index *indices, std::size_t pixels, const unsigned char *palette, mint paletteRows,
                   std::size_t colourBytes, unsigned char *out) {
    for (std::size_t p = 0; p < pixels; ++p) {
        if (indices[p] >= static_cast<std::uint64_t>(paletteRows))
            throw CliError("ImageQuantize gave an index past its palette");
        std::memcpy(out + p * colourBytes, palette + std::size_t(indices[p]) * colourBytes, colourBytes);
    }
}

}  // namespace

MImage paletteAtIndices(MImage image, MRawArray palette, MRawArray indices) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const QuorbelRawArrayFunctions arrays = hostTable()->rawArrayFunctions;
    const MImage_Data_Type type = images->getDataType(image);
    const mint rows = images->getRowCount(image), columns = images->getColumnCount(image);
    const mint slices = images->getSliceCount(image), channels = images->getChannels(image);
    const std::size_t colourBytes = std::size_t(channels) * rh_image_sample_size(type);
    if (rh_raw_array_element_size(arrays->getType(palette)) * std::size_t(arrays->getDimensions(palette)[1]) !=
        colourBytes)
        throw CliError("ImageQuantize gave a palette that does not match the image's samples");
    // Made through the host's table as the plug-in makes its own answer, so
    // that the host flags alpha on the same images.
    MImage made = nullptr;
    const int code =
        images->getRank(image) == 3
            ? images->new3D(slices, columns, rows, channels, type, images->getColorSpace(image), QUORBEL_TRUE, &made)
            : images->new2D(columns, rows, channels, type, images->getColorSpace(image), QUORBEL_TRUE, &made);
    if (code != 0) throw CliError("the host cannot make the redrawn image (code " + std::to_string(code) + ")");
    rh::Image redrawn(made);
    const std::size_t pixels = std::size_t(slices * rows * columns);
    const auto *colours = static_cast<const unsigned char *>(arrays->getData(palette));
    const mint paletteRows = arrays->getDimensions(palette)[0];
    auto *out = static_cast<unsigned char *>(images->getRawData(made));
    const void *data = arrays->getData(indices);
    const auto lookUp = [&](const auto *typed) {
        lookUpColours(typed, pixels, colours, paletteRows, colourBytes, out);
    };
    switch (arrays->getType(indices)) {
    case MRawArray_Type_UBit8: lookUp(static_cast<const std::uint8_t *>(data)); break;
    case MRawArray_Type_UBit16: lookUp(static_cast<const std::uint16_t *>(data)); break;
    case MRawArray_Type_UBit32: lookUp(static_cast<const std::uint32_t *>(data)); break;
    case MRawArray_Type_UBit64: lookUp(static_cast<const std::uint64_t *>(data)); break;
    default: throw CliError("ImageQuantize gave indices of an unexpected type");
    }
    return redrawn.release();
}

MRawArray quantizeImage(MImage image, const QuantizeSettings &s, bool paletteOnly) {
    return call("ImageQuantize",
                {{RH_IMAGE, {.image = image}, 0}, integer(s.colors), string(s.dither), boolean(paletteOnly),
                 integer(s.method), integer(bitsFor(image, s))},
                RH_RAW_ARRAY)
        .value.rawArray;
}

MImage ditherImage(MImage image, MRawArray colorMap, const std::string &method) {
    return call("DitherImage",
                {{RH_IMAGE, {.image = image}, 0}, {RH_RAW_ARRAY, {.rawArray = colorMap}, 0}, string(method),
                 boolean(false), boolean(false)},
                RH_IMAGE)
        .value.image;
}

long long uniqueColors(MImage image, bool ordered) {
    return call("UniqueColors", {{RH_IMAGE, {.image = image}, 0}, boolean(ordered)}, RH_INTEGER).value.integer;
}

}  // namespace tarvex_cli
