#include "ImportCalls.h"

#include <cstring>

namespace gif_test {
namespace {

QuorbelImageFunctions images() { return rh_library_data(RH_TABLE_FULL)->imageFunctions; }

Picture takePicture(int code, const RhValue &result) {
    Picture picture;
    picture.code = code;
    picture.written = result.written != 0;
    if (code != 0 || !picture.written) return picture;
    MImage image = result.value.image;
    picture.width = images()->getColumnCount(image);
    picture.height = images()->getRowCount(image);
    picture.channels = images()->getChannels(image);
    picture.slices = images()->getSliceCount(image);
    picture.rank = images()->getRank(image);
    const auto *data = static_cast<const std::uint8_t *>(images()->getRawData(image));
    picture.samples.assign(data, data + picture.width * picture.height * picture.channels *
                                            picture.slices);
    images()->free(image);
    return picture;
}

RhValue stringArgument(const std::string &text) {
    RhValue value{};
    value.kind = RH_STRING;
    value.value.string = text.c_str();
    return value;
}

char letterOf(const std::vector<std::uint8_t> &p) {
    static const char *letters = "KRGBWYCM";
    for (int i = 0; i < 8; ++i) {
        const Rgb &c = kEight[static_cast<std::size_t>(i)];
        if (p[0] != c.r || p[1] != c.g || p[2] != c.b) continue;
        if (p[3] == 255) return letters[i];
        if (p[3] == 0) return static_cast<char>(letters[i] - 'A' + 'a');
    }
    return '?';
}

}  // namespace

std::vector<std::uint8_t> Picture::pixel(long slice, long x, long y) const {
    const auto at = static_cast<std::size_t>(((slice * height + y) * width + x) * channels);
    std::vector<std::uint8_t> p(samples.begin() + static_cast<std::ptrdiff_t>(at),
                                samples.begin() + static_cast<std::ptrdiff_t>(at) + channels);
    if (channels == 3) p.push_back(255);
    return p;
}

std::vector<std::string> Picture::rows(long slice) const {
    std::vector<std::string> result;
    for (long y = 0; y < height; ++y) {
        std::string row;
        for (long x = 0; x < width; ++x) row += letterOf(pixel(slice, x, y));
        result.push_back(row);
    }
    return result;
}

Picture readOneFrame(const std::string &path, long frameNumber) {
    RhValue args[2] = {stringArgument(path), {}};
    args[1].kind = RH_INTEGER;
    args[1].value.integer = frameNumber;
    RhValue result{};
    result.kind = RH_IMAGE;
    const int code = rh_call(tarvex_test::plugin(), "ReadOneFrame", 2, args, &result);
    return takePicture(code, result);
}

Picture readAllFrames(const std::string &path) {
    RhValue args[1] = {stringArgument(path)};
    RhValue result{};
    result.kind = RH_IMAGE;
    const int code = rh_call(tarvex_test::plugin(), "ReadAllFrames", 1, args, &result);
    return takePicture(code, result);
}

Tensor readGlobalPalette(const std::string &path) {
    RhValue args[1] = {stringArgument(path)};
    RhValue result{};
    result.kind = RH_TENSOR;
    Tensor tensor;
    tensor.code = rh_call(tarvex_test::plugin(), "ReadGlobalPalette", 1, args, &result);
    tensor.written = result.written != 0;
    if (tensor.code != 0 || !tensor.written) return tensor;
    QuorbelLibraryData table = rh_library_data(RH_TABLE_FULL);
    MTensor handle = result.value.tensor;
    const mint rank = table->tensorGetRank(handle);
    const mint *dims = table->tensorGetDimensions(handle);
    tensor.dimensions.assign(dims, dims + rank);
    const mint *data = table->tensorGetIntegerData(handle);
    tensor.values.assign(data, data + table->tensorGetFlattenedLength(handle));
    table->tensorFree(handle);
    return tensor;
}

std::string linkAnswer(const char *exportName, const std::string &path, int *code) {
    return tarvex_test::callLink(exportName, ("{\"" + path + "\"}").c_str(), code);
}

int clearCache(const std::string &path, bool *removed) {
    RhValue args[1] = {stringArgument(path)};
    RhValue result{};
    result.kind = RH_BOOLEAN;
    const int code = rh_call(tarvex_test::plugin(), "ClearCache", 1, args, &result);
    if (removed != nullptr) *removed = result.written && result.value.boolean != 0;
    return code;
}

}  // namespace gif_test
