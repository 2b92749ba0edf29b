#include "ColorExports.h"

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
