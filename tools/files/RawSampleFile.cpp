#include "RawSampleFile.h"

#include <cctype>
#include <cstring>
#include <optional>
#include <stdexcept>

#include "BinaryFiles.h"
#include "Command.h"
#include "HostTable.h"
#include "KeyValues.h"
#include "NumberText.h"
#include "TypeNames.h"

namespace tarvex_cli {
namespace {

void requireFlag(const KeyValue &option) {
    if (option.hasValue) throw std::invalid_argument("'" + option.key + "' takes no value");
}

void applyOption(const KeyValue &option, RawImageLayout &layout, std::optional<MImage_CS_Type> &space) {
    const std::string &key = option.key;
    if (key == "type") {
        auto type = findImageType(option.value);
        if (!type) throw std::invalid_argument("type must be bit, byte, bit16, real32 or real64, not '" + option.value + "'");
        layout.type = *type;
    } else if (key == "width") {
        layout.width = parseCount(option, 1);
    } else if (key == "height") {
        layout.height = parseCount(option, 1);
    } else if (key == "channels") {
        layout.channels = parseCount(option, 1);
    } else if (key == "slices") {
        layout.slices = parseCount(option, 1);
    } else if (key == "planar" || key == "interleaved") {
        requireFlag(option);
        layout.planar = key == "planar";
    } else if (key == "alpha") {
        requireFlag(option);
        layout.alpha = true;
    } else if (key == "cs") {
        space = findColorSpace(option.value);
        if (!space) throw std::invalid_argument("unknown colour space '" + option.value + "'");
    } else {
        throw std::invalid_argument("unknown option '" + key + "'");
    }
}

bool hasKey(const std::vector<KeyValue> &options, const char *key) {
    for (const KeyValue &option : options)
        if (option.key == key) return true;
    return false;
}

std::vector<mint> extentsOf(const RawImageLayout &layout) {
    return {layout.slices > 0 ? layout.slices : 1, layout.height, layout.width, layout.channels};
}

// 1-bit images hold one byte per sample, and only 0 and 1 mean anything.
void checkBitSamples(const std::vector<std::byte> &bytes, const std::string &path) {
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (bytes[i] != std::byte{0} && bytes[i] != std::byte{1})
            throw usageError(path + ": byte " + std::to_string(i) + " of a bit image is " +
                             std::to_string(static_cast<int>(bytes[i])) + ", not 0 or 1");
}

}  // namespace

RawImageLayout parseRawImageLayout(std::string_view text) {
    const std::vector<KeyValue> options = splitKeyValues(text);
    for (const char *key : {"type", "width", "height"})
        if (!hasKey(options, key)) throw std::invalid_argument(std::string("'") + key + "' is missing");
    RawImageLayout layout;
    std::optional<MImage_CS_Type> space;
    for (const KeyValue &option : options) applyOption(option, layout, space);
    if (layout.alpha && layout.channels < 2) throw std::invalid_argument("an alpha channel needs at least 2 channels");
    layout.colorSpace = space.value_or(defaultColorSpace(layout.channels, layout.alpha));
    return layout;
}

std::string formatRawImageLayout(const RawImageLayout &layout) {
    std::string text = "type=" + std::string(imageTypeName(layout.type)) + ",width=" + std::to_string(layout.width) +
                       ",height=" + std::to_string(layout.height) + ",channels=" + std::to_string(layout.channels);
    for (char &c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (layout.slices > 0) text += ",slices=" + std::to_string(layout.slices);
    if (layout.planar) text += ",planar";
    if (layout.alpha) text += ",alpha";
    return text + ",cs=" + colorSpaceKey(layout.colorSpace);
}

std::size_t rawImageByteCount(const RawImageLayout &layout) {
    return checkedByteCount(extentsOf(layout), rh_image_sample_size(layout.type));
}

MImage readRawImage(const std::string &path, const RawImageLayout &layout) {
    const std::size_t expected = rawImageByteCount(layout);
    std::vector<std::byte> bytes = readFileBytes(path, expected + 1);
    if (bytes.size() != expected)
        throw usageError(path + " " + heldBytes(bytes.size(), expected) + ", but " + formatRawImageLayout(layout) +
                         " needs " + std::to_string(expected));
    if (layout.type == MImage_Type_Bit) checkBitSamples(bytes, path);
    MImage image = nullptr;
    int code = rh_image_new(layout.slices, layout.width, layout.height, layout.channels, layout.type,
                            layout.colorSpace, layout.planar ? QUORBEL_FALSE : QUORBEL_TRUE,
                            layout.alpha ? QUORBEL_TRUE : QUORBEL_FALSE, &image);
    if (code != 0) throw CliError("the host could not make an image for " + path + " (code " + std::to_string(code) + ")");
    std::memcpy(hostTable()->imageFunctions->getRawData(image), bytes.data(), bytes.size());
    return image;
}

RawImageLayout layoutOf(MImage image) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    RawImageLayout layout;
    layout.type = images->getDataType(image);
    layout.width = images->getColumnCount(image);
    layout.height = images->getRowCount(image);
    layout.channels = images->getChannels(image);
    layout.slices = images->getRank(image) == 3 ? images->getSliceCount(image) : 0;
    layout.planar = !images->interleavedQ(image);
    layout.alpha = images->alphaChannelQ(image);
    layout.colorSpace = images->getColorSpace(image);
    return layout;
}

void writeRawImage(MImage image, const std::string &path) {
    const RawImageLayout layout = layoutOf(image);
    writeFileBytes(path, hostTable()->imageFunctions->getRawData(image), rawImageByteCount(layout));
}

}  // namespace tarvex_cli
