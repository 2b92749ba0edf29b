// Calling the quantization exports in the reference host.
#pragma once

#include <string>
#include <vector>

#include "DitherCall.h"

namespace quant_test {

using namespace dither_test;

enum Method : mint { kMedianCut = 1, kWu = 2, kOctree = 3 };

struct QuantizeArguments {
    MImage image;
    mint colorCount = 16;
    std::string dither = "None";
    bool paletteOnly = false;
    mint method = kWu;
    mint bits = 6;
};

inline RhValue imageArgument(MImage image) { return RhValue{RH_IMAGE, {.image = image}, 0}; }
inline RhValue integerArgument(mint value) { return RhValue{RH_INTEGER, {.integer = value}, 0}; }
inline RhValue booleanArgument(bool value) { return RhValue{RH_BOOLEAN, {.boolean = value}, 0}; }
inline RhValue stringArgument(const std::string &text) {
    return RhValue{RH_STRING, {.string = text.c_str()}, 0};
}

// ImageQuantize's code; the raw array, when written, goes to *result.
inline int callImageQuantize(const QuantizeArguments &a, MRawArray *result) {
    const RhValue args[6] = {imageArgument(a.image),        integerArgument(a.colorCount),
                             stringArgument(a.dither),      booleanArgument(a.paletteOnly),
                             integerArgument(a.method),     integerArgument(a.bits)};
    RhValue answer{RH_RAW_ARRAY, {}, 0};
    const int code = rh_call(tarvex_test::plugin(), "ImageQuantize", 6, args, &answer);
    *result = answer.written ? answer.value.rawArray : nullptr;
    return code;
}

// GetQuantizedImage's code (paletteOnly is not one of its arguments).
inline int callGetQuantizedImage(const QuantizeArguments &a, MImage *result) {
    const RhValue args[5] = {imageArgument(a.image), integerArgument(a.colorCount),
                             stringArgument(a.dither), integerArgument(a.method),
                             integerArgument(a.bits)};
    RhValue answer{RH_IMAGE, {}, 0};
    const int code = rh_call(tarvex_test::plugin(), "GetQuantizedImage", 5, args, &answer);
    *result = answer.written ? answer.value.image : nullptr;
    return code;
}

inline int callUniqueColors(MImage image, bool ordered, mint *count) {
    const RhValue args[2] = {imageArgument(image), booleanArgument(ordered)};
    RhValue answer{RH_INTEGER, {}, 0};
    const int code = rh_call(tarvex_test::plugin(), "UniqueColors", 2, args, &answer);
    *count = answer.written ? answer.value.integer : -1;
    return code;
}

template <typename T>
std::vector<T> elementsOf(MRawArray array) {
    const auto *data = static_cast<const T *>(rawArrays()->getData(array));
    return std::vector<T>(data, data + rawArrays()->getFlattenedLength(array));
}

inline std::vector<mint> dimensionsOf(MRawArray array) {
    const mint *dims = rawArrays()->getDimensions(array);
    return std::vector<mint>(dims, dims + rawArrays()->getRank(array));
}

}  // namespace quant_test
