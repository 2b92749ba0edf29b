#include <cstdio>
#include <string>
#include <vector>

#include "ColorExports.h"
#include "Command.h"
#include "CommandImages.h"
#include "Options.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kColorsHelp[] = R"(usage: tarvex colors IN [--ordered] [--layout LAYOUT]

Prints the number of distinct colours of an image (UniqueColors). Alpha,
when the image has it, counts as an ordinary last channel: two pixels of one
colour and different opacity are two colours.

  --ordered        count with the plug-in's ordered map rather than its hash
                   map; the count is the same, except that every NaN sample
                   of a real image is a new colour in the hashed count
  --layout LAYOUT  IN is a raw sample file of this layout (how 32-bit and
                   64-bit real images travel)

IN is a PNG (8 or 16 bits) or JPEG file, or - for standard input.

Example:
  tarvex colors photo.png
)";

const std::vector<OptionRule> kColorsOptions{{"--ordered"}, {"--layout", {}, true}};

int runColors(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("colors", args, kColorsOptions);
    const rh::Image read(
        readCommandImage({onlyOperand("colors", parsed, "image"), layoutOption("colors", parsed.value("--layout"))}));
    const rh::Image opaque(withAlphaAsChannel(read.get()));
    std::printf("%lld\n", uniqueColors(opaque ? opaque.get() : read.get(), parsed.has("--ordered")));
    return 0;
}

const RegisterCommand registered{{"colors", "count the distinct colours of an image", kColorsHelp, &runColors}};

}  // namespace
}  // namespace tarvex_cli
