#include "ExportCalls.h"

#include <cstring>
#include <filesystem>

namespace export_test {
namespace {

QuorbelLibraryData host() { return rh_library_data(RH_TABLE_FULL); }

rh::Tensor newTensor(const TensorArgument &argument) {
    std::vector<mint> dims = argument.dimensions;
    if (dims.empty()) dims.push_back(static_cast<mint>(argument.values.size()));
    MTensor tensor = nullptr;
    EXPECT_EQ(host()->tensorNew(argument.type, static_cast<mint>(dims.size()), dims.data(), &tensor), 0);
    const auto length = static_cast<std::size_t>(host()->tensorGetFlattenedLength(tensor));
    EXPECT_EQ(argument.values.size(), length) << "values for a tensor of another size";
    for (std::size_t i = 0; i < std::min(argument.values.size(), length); ++i) {
        if (argument.type == MTensor_Type_Integer)
            host()->tensorGetIntegerData(tensor)[i] = static_cast<mint>(argument.values[i]);
        else
            host()->tensorGetRealData(tensor)[i] = argument.values[i];
    }
    return rh::Tensor(tensor);
}

RhValue text(const std::string &value) { return RhValue{RH_STRING, {.string = value.c_str()}, 0}; }
RhValue tensor(const rh::Tensor &value) { return RhValue{RH_TENSOR, {.tensor = value.get()}, 0}; }

// Calls `name` with `leading` followed by the options in their fixed order.
WriteResult call(const char *name, std::vector<RhValue> leading, const WriteOptions &o, mint argc) {
    const rh::Tensor durations = newTensor(o.durations), background = newTensor(o.background),
                     transparency = newTensor(o.transparency), disposals = newTensor(o.disposals);
    std::vector<RhValue> args = std::move(leading);
    args.insert(args.end(),
                {text(o.file), text(o.comments), tensor(durations), text(o.dither),
                 RhValue{RH_INTEGER, {.integer = o.loops}, 0},
                 RhValue{RH_BOOLEAN, {.boolean = o.interlace}, 0}, tensor(background),
                 tensor(transparency), tensor(disposals)});
    args.resize(static_cast<std::size_t>(std::max<mint>(argc, 0)), RhValue{RH_INTEGER, {}, 0});
    RhValue result{RH_STRING, {}, 0};
    WriteResult answer;
    answer.code = rh_call(tarvex_test::plugin(), name, argc, args.data(), &result);
    answer.written = result.written != 0;
    if (answer.written && result.value.string != nullptr) answer.fileName = result.value.string;
    return answer;
}

std::vector<Rgb> colorsOf(const ColorMapObject *map) {
    std::vector<Rgb> colors;
    if (map == nullptr) return colors;
    for (int i = 0; i < map->ColorCount; ++i)
        colors.push_back({map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue});
    return colors;
}

void readExtensions(const ExtensionBlock *blocks, int count, DecodedGif &gif) {
    for (int i = 0; i < count; ++i) {
        const ExtensionBlock &block = blocks[i];
        const auto *bytes = reinterpret_cast<const char *>(block.Bytes);
        if (block.Function == COMMENT_EXT_FUNC_CODE) {
            gif.comments.emplace_back(bytes, static_cast<std::size_t>(block.ByteCount));
            for (; i + 1 < count && blocks[i + 1].Function == CONTINUE_EXT_FUNC_CODE; ++i)
                gif.comments.back().append(reinterpret_cast<const char *>(blocks[i + 1].Bytes),
                                           static_cast<std::size_t>(blocks[i + 1].ByteCount));
        } else if (block.Function == APPLICATION_EXT_FUNC_CODE &&
                   std::string(bytes, static_cast<std::size_t>(block.ByteCount)) == "NETSCAPE2.0") {
            std::vector<std::uint8_t> data;
            for (; i + 1 < count && blocks[i + 1].Function == CONTINUE_EXT_FUNC_CODE; ++i)
                data.insert(data.end(), blocks[i + 1].Bytes,
                            blocks[i + 1].Bytes + blocks[i + 1].ByteCount);
            gif.loopBlocks.push_back(data);
        }
    }
}

}  // namespace

TensorArgument ints(std::vector<double> values, std::vector<mint> dimensions) {
    return {MTensor_Type_Integer, std::move(values), std::move(dimensions)};
}

TensorArgument reals(std::vector<double> values, std::vector<mint> dimensions) {
    return {MTensor_Type_Real, std::move(values), std::move(dimensions)};
}

WriteResult writeFrames(MImage frames, const WriteOptions &options, mint argc) {
    return call("WriteFrames", {RhValue{RH_IMAGE, {.image = frames}, 0}}, options, argc);
}

WriteResult writeColormaps(MRawArray maps, MRawArray indices, const WriteOptions &options,
                           mint argc) {
    return call("WriteColormaps",
                {RhValue{RH_RAW_ARRAY, {.rawArray = maps}, 0},
                 RhValue{RH_RAW_ARRAY, {.rawArray = indices}, 0}},
                options, argc);
}

rh::Image byteImage(mint slices, mint width, mint height, mint channels,
                    const std::vector<std::uint8_t> &samples, MImage_CS_Type colorSpace) {
    if (colorSpace == MImage_CS_Automatic) colorSpace = channels == 1 ? MImage_CS_Gray : MImage_CS_RGB;
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(slices, width, height, channels, MImage_Type_Bit8, colorSpace, 1, 0, &image),
              0);
    if (image != nullptr && !samples.empty())
        std::memcpy(host()->imageFunctions->getRawData(image), samples.data(), samples.size());
    return rh::Image(image);
}

rh::RawArray byteArray(const std::vector<mint> &dimensions, const std::vector<std::uint8_t> &bytes) {
    MRawArray array = nullptr;
    EXPECT_EQ(host()->rawArrayFunctions->create(MRawArray_Type_UBit8,
                                                static_cast<mint>(dimensions.size()),
                                                dimensions.data(), &array),
              0);
    if (array != nullptr && !bytes.empty())
        std::memcpy(host()->rawArrayFunctions->getData(array), bytes.data(), bytes.size());
    return rh::RawArray(array);
}

std::vector<std::uint8_t> colorBytes(const std::vector<Rgb> &colors) {
    std::vector<std::uint8_t> bytes;
    for (const Rgb &c : colors) bytes.insert(bytes.end(), {c.r, c.g, c.b});
    return bytes;
}

std::string outputPath(const std::string &name) {
    const std::string path = gif_test::scratchPath(name);
    std::filesystem::remove(path);
    return path;
}

bool fileExists(const std::string &path) { return std::filesystem::exists(path); }

std::vector<std::uint8_t> fileBytes(const std::string &path) {
    const std::string bytes = tarvex_test::fileContents(path);
    return {bytes.begin(), bytes.end()};
}

Rgb DecodedGif::color(std::size_t k, std::size_t i) const {
    const std::vector<Rgb> &map = images[k].localMap.empty() ? globalMap : images[k].localMap;
    return map.at(images[k].indices.at(i));
}

DecodedGif decodeGif(const std::string &path) {
    DecodedGif result;
    const std::vector<std::uint8_t> bytes = fileBytes(path);
    result.version.assign(bytes.begin(), bytes.begin() + std::min<std::size_t>(6, bytes.size()));
    int error = 0;
    GifFileType *gif = DGifOpenFileName(path.c_str(), &error);
    if (gif == nullptr) {
        ADD_FAILURE() << "giflib cannot open " << path << ": " << GifErrorString(error);
        return result;
    }
    if (DGifSlurp(gif) != GIF_OK) ADD_FAILURE() << "giflib cannot decode " << path;
    result.width = gif->SWidth;
    result.height = gif->SHeight;
    result.background = gif->SBackGroundColor;
    result.globalMap = colorsOf(gif->SColorMap);
    for (int k = 0; k < gif->ImageCount; ++k) {
        const SavedImage &saved = gif->SavedImages[k];
        readExtensions(saved.ExtensionBlocks, saved.ExtensionBlockCount, result);
        DecodedImage image;
        image.width = saved.ImageDesc.Width;
        image.height = saved.ImageDesc.Height;
        image.interlaced = saved.ImageDesc.Interlace;
        image.localMap = colorsOf(saved.ImageDesc.ColorMap);
        image.indices.assign(saved.RasterBits,
                             saved.RasterBits + std::size_t(image.width) * image.height);
        GraphicsControlBlock control;
        if (DGifSavedExtensionToGCB(gif, k, &control) == GIF_OK) image.control = control;
        result.images.push_back(std::move(image));
    }
    readExtensions(gif->ExtensionBlocks, gif->ExtensionBlockCount, result);
    DGifCloseFile(gif, &error);
    return result;
}

}  // namespace export_test
