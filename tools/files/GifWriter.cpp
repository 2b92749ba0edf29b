#include "GifWriter.h"

#include <cstring>
#include <unordered_map>

#include "Command.h"
#include "Escapes.h"
#include "HostTable.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

rh::Tensor tensor(MTensor_Data_Type type, const std::vector<double> &values) {
    const mint length = mint(values.size());
    MTensor made = nullptr;
    if (hostTable()->tensorNew(type, 1, &length, &made) != 0) throw CliError("cannot make a tensor");
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (type == MTensor_Type_Real) hostTable()->tensorGetRealData(made)[i] = values[i];
        else hostTable()->tensorGetIntegerData(made)[i] = static_cast<mint>(values[i]);
    }
    return rh::Tensor(made);
}

rh::RawArray byteArray(const std::vector<mint> &dimensions, const std::vector<std::uint8_t> &bytes) {
    MRawArray made = nullptr;
    if (hostTable()->rawArrayFunctions->create(MRawArray_Type_UBit8, mint(dimensions.size()), dimensions.data(),
                                               &made) != 0)
        throw CliError("not enough memory for the frames");
    std::memcpy(hostTable()->rawArrayFunctions->getData(made), bytes.data(), bytes.size());
    return rh::RawArray(made);
}

// The transparent colour as the export takes it: a grey level for grey
// frames, three channels otherwise.
std::vector<double> transparencyArgument(const std::vector<double> &color, mint channels) {
    if (color.empty() || channels == 3 || color.size() == 1) {
        if (channels == 3 && color.size() == 1) return {color[0], color[0], color[0]};
        return color;
    }
    if (color[0] == color[1] && color[1] == color[2]) return {color[0]};
    throw usageError("gif: grey frames need a grey --transparent colour");
}

std::string joinedComments(const std::vector<std::string> &comments) {
    std::string joined;
    for (const std::string &c : comments) joined += (joined.empty() ? "" : std::string(kListSeparator)) + c;
    return joined;
}

// The arguments after the pixels and maps, shared by both exports.
struct TrailingArguments {
    rh::Tensor delays, background, transparency, disposals;
    std::string comments;

    TrailingArguments(const GifSettings &s, mint channels)
        : delays(tensor(MTensor_Type_Real, s.delays)),
          background(tensor(MTensor_Type_Integer, s.background)),
          transparency(tensor(MTensor_Type_Integer, transparencyArgument(s.transparent, channels))),
          disposals(tensor(MTensor_Type_Integer, s.disposals)),
          comments(joinedComments(s.comments)) {}

    void appendTo(std::vector<RhValue> &args, const GifSettings &s, const std::string &path) const {
        args.insert(args.end(), {{RH_STRING, {.string = path.c_str()}, 0},
                                 {RH_STRING, {.string = comments.c_str()}, 0},
                                 {RH_TENSOR, {.tensor = delays.get()}, 0},
                                 {RH_STRING, {.string = s.dither.c_str()}, 0},
                                 {RH_INTEGER, {.integer = s.loops}, 0},
                                 {RH_BOOLEAN, {.boolean = s.interlace}, 0},
                                 {RH_TENSOR, {.tensor = background.get()}, 0},
                                 {RH_TENSOR, {.tensor = transparency.get()}, 0},
                                 {RH_TENSOR, {.tensor = disposals.get()}, 0}});
    }
};

void callWriter(const char *name, std::vector<RhValue> args, const std::string &output) {
    RhValue result{RH_STRING, {}, 0};
    const int code = rh_call(plugin(), name, mint(args.size()), args.data(), &result);
    switch (code) {
    case 0: return;
    case -9: throw CliError("giflib failed while writing " + output);
    case -13: throw CliError("the --transparent colour is not in the palette of every frame");
    default:
        throw CliError(std::string(name) + " refused its arguments (code " + std::to_string(code) +
                       "); cannot write " + output + "?");
    }
}

}  // namespace

MRawArray newFrameIndices(mint frames, mint height, mint width) {
    const mint dimensions[3] = {frames, height, width};
    MRawArray made = nullptr;
    if (hostTable()->rawArrayFunctions->create(MRawArray_Type_UBit8, 3, dimensions, &made) != 0)
        throw CliError("not enough memory for the frames");
    return made;
}

void writeIndexedGif(const std::vector<std::uint8_t> &mapRgb, mint maps, MRawArray indices,
                     const GifSettings &settings, const std::string &path) {
    const mint colors = mint(mapRgb.size() / 3) / maps;
    mint size = 2;
    while (size < colors) size *= 2;
    std::vector<std::uint8_t> mapBytes(std::size_t(maps * size * 3), 0);
    for (mint k = 0; k < maps; ++k)
        std::memcpy(mapBytes.data() + k * size * 3, mapRgb.data() + k * colors * 3, std::size_t(colors * 3));
    const rh::RawArray map = maps == 1 ? byteArray({size, 3}, mapBytes) : byteArray({maps, size, 3}, mapBytes);
    const TrailingArguments trailing(settings, 3);
    std::vector<RhValue> args{{RH_RAW_ARRAY, {.rawArray = map.get()}, 0}, {RH_RAW_ARRAY, {.rawArray = indices}, 0}};
    trailing.appendTo(args, settings, path);
    callWriter("WriteColormaps", args, path);
}

void writeIndexedGif(const IndexedFrames &frames, const GifSettings &settings, const std::string &path) {
    const rh::RawArray indices(newFrameIndices(frames.frames, frames.height, frames.width));
    std::memcpy(hostTable()->rawArrayFunctions->getData(indices.get()), frames.indices.data(), frames.indices.size());
    writeIndexedGif(frames.mapRgb, 1, indices.get(), settings, path);
}

void writeImageGif(MImage image, const GifSettings &settings, const std::string &path) {
    const TrailingArguments trailing(settings, hostTable()->imageFunctions->getChannels(image));
    std::vector<RhValue> args{{RH_IMAGE, {.image = image}, 0}};
    trailing.appendTo(args, settings, path);
    callWriter("WriteFrames", args, path);
}

IndexedFrames indexedFramesOf(MImage image, const std::string &path) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const mint channels = images->getChannels(image);
    if (images->getDataType(image) != MImage_Type_Bit8 || (channels != 1 && channels != 3) ||
        images->alphaChannelQ(image))
        throw CliError(path + ": a GIF file holds 8-bit grey or RGB pictures; write PNG instead");
    IndexedFrames frames;
    frames.frames = images->getSliceCount(image);
    frames.height = images->getRowCount(image);
    frames.width = images->getColumnCount(image);
    const auto *samples = static_cast<const std::uint8_t *>(images->getRawData(image));
    const std::size_t pixels = std::size_t(frames.frames * frames.height * frames.width);
    std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
    frames.indices.reserve(pixels);
    for (std::size_t p = 0; p < pixels; ++p) {
        const std::uint8_t *s = samples + p * std::size_t(channels);
        const std::uint8_t rgb[3] = {s[0], s[channels == 3 ? 1 : 0], s[channels == 3 ? 2 : 0]};
        const std::uint32_t key = std::uint32_t(rgb[0]) << 16 | std::uint32_t(rgb[1]) << 8 | rgb[2];
        auto [at, added] = indexOf.try_emplace(key, std::uint8_t(indexOf.size()));
        if (added) {
            if (indexOf.size() > 256)
                throw CliError(path + ": the picture has more than 256 colours, more than a GIF map holds; "
                                      "reduce them first (tarvex quantize) or write PNG");
            frames.mapRgb.insert(frames.mapRgb.end(), rgb, rgb + 3);
        }
        frames.indices.push_back(at->second);
    }
    return frames;
}

}  // namespace tarvex_cli
