#include "ImportCalls.h"

#include <cstdlib>

#include "refhost/refhost.hpp"

namespace gif_test {
namespace {

QuorbelLibraryData table() { return rh_library_data(RH_TABLE_FULL); }

constexpr const char *kBudgetVariable = "TARVEX_DECODE_BUDGET";

Picture takePicture(int code, const RhValue &result) {
    Picture picture;
    picture.code = code;
    picture.written = result.written != 0;
    if (code != 0 || !picture.written) return picture;
    const QuorbelImageFunctions images = table()->imageFunctions;
    MImage image = result.value.image;
    const rh::Image owned(image);
    picture.width = images->getColumnCount(image);
    picture.height = images->getRowCount(image);
    picture.channels = images->getChannels(image);
    picture.slices = images->getSliceCount(image);
    picture.rank = images->getRank(image);
    const auto *data = static_cast<const std::uint8_t *>(images->getRawData(image));
    picture.samples.assign(data, data + picture.width * picture.height * picture.channels *
                                            picture.slices);
    return picture;
}

// The kind of `result` says what to read back.
int callWithPath(const char *exportName, const std::string &path, RhValue &result,
                 std::vector<RhValue> more = {}) {
    more.insert(more.begin(), RhValue{RH_STRING, {.string = path.c_str()}, 0});
    return rh_call(tarvex_test::plugin(), exportName, static_cast<mint>(more.size()), more.data(), &result);
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
    const auto at = samples.begin() + ((slice * height + y) * width + x) * channels;
    std::vector<std::uint8_t> p(at, at + channels);
    if (channels == 3) p.push_back(255);
    return p;
}

std::vector<std::string> Picture::rows(long slice) const {
    std::vector<std::string> result(static_cast<std::size_t>(height));
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) result[static_cast<std::size_t>(y)] += letterOf(pixel(slice, x, y));
    return result;
}

Picture readOneFrame(const std::string &path, long frameNumber) {
    RhValue result{RH_IMAGE, {}, 0};
    const int code = callWithPath("ReadOneFrame", path, result, {{RH_INTEGER, {.integer = frameNumber}, 0}});
    return takePicture(code, result);
}

Picture readAllFrames(const std::string &path) {
    RhValue result{RH_IMAGE, {}, 0};
    const int code = callWithPath("ReadAllFrames", path, result);
    return takePicture(code, result);
}

Tensor readGlobalPalette(const std::string &path) {
    RhValue result{RH_TENSOR, {}, 0};
    Tensor tensor;
    tensor.code = callWithPath("ReadGlobalPalette", path, result);
    tensor.written = result.written != 0;
    if (tensor.code != 0 || !tensor.written) return tensor;
    MTensor handle = result.value.tensor;
    const rh::Tensor owned(handle);
    const mint *dims = table()->tensorGetDimensions(handle);
    tensor.dimensions.assign(dims, dims + table()->tensorGetRank(handle));
    const mint *data = table()->tensorGetIntegerData(handle);
    tensor.values.assign(data, data + table()->tensorGetFlattenedLength(handle));
    return tensor;
}

int clearCache(const std::string &path, bool *removed) {
    RhValue result{RH_BOOLEAN, {}, 0};
    const int code = callWithPath("ClearCache", path, result);
    if (removed != nullptr) *removed = result.written && result.value.boolean != 0;
    return code;
}

std::string linkAnswer(const char *exportName, const std::string &path, int *code) {
    return tarvex_test::callLink(exportName, ("{\"" + path + "\"}").c_str(), code);
}

ScopedDecodeBudget::ScopedDecodeBudget(std::uint64_t bytes) {
    const char *previous = std::getenv(kBudgetVariable);
    hadPrevious_ = previous != nullptr;
    if (hadPrevious_) previous_ = previous;
    ::setenv(kBudgetVariable, std::to_string(bytes).c_str(), 1);
}

ScopedDecodeBudget::~ScopedDecodeBudget() {
    if (hadPrevious_)
        ::setenv(kBudgetVariable, previous_.c_str(), 1);
    else
        ::unsetenv(kBudgetVariable);
}

}  // namespace gif_test
