#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>

#include "ColorExports.h"
#include "Command.h"
#include "PaletteFiles.h"
#include "HostTable.h"
#include "CommandImages.h"
#include "MethodNames.h"
#include "Options.h"
#include "RawSampleFile.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kDitherHelp[] = R"(usage: tarvex dither IN -o OUT --palette P [--method none|floyd-steinberg]
       tarvex dither IN --layout LAYOUT -o OUT --palette P [--method ...]

Maps every pixel of an image to a colour of a palette (DitherImage):
"none" takes each pixel's nearest colour, "floyd-steinberg" (the default)
also spreads each pixel's error to its neighbours. The plug-in's names,
None and FloydSteinberg, are taken too.

IN is a PNG (8 or 16 bits, kept so) or JPEG file, - for standard input.
OUT's extension chooses its format: .png, or .gif (written by the plug-in's
WriteColormaps, for 8-bit grey or RGB results of at most 256 colours); - is
PNG on standard output, gif:- GIF (gif:OUT and png:OUT choose the format
whatever OUT's extension). With --layout, IN is a raw sample file of that
layout (type=real32,width=W,height=H,channels=C[,slices=S]) and OUT is
written as one; its layout is printed.

P is one of:
  a list of colours    "#ff0000,#00ff00,#0000ff" or "255,0,0;0,255,0"
  a named palette      bw, grey4, grey16, grey256, web (216), 332 (256)
  a text file          one colour a line, in either form, or the output
                       of tarvex palette (its first palette)
  an image file        whose distinct colours form the palette (at most
                       65,536)
  a GIF file           its global palette; FILE.gif:N the palette frame N
                       draws with
Hex colours (two digits a channel) are rescaled to the image's samples;
plain numbers are samples as they stand (0..65535 for 16-bit images, any
real for real images). Every colour needs as many channels as the image;
grey palettes serve RGB images too.

Examples:
  tarvex dither photo.png -o out.gif --palette web
  tarvex dither photo.png -o out.png --palette anim.gif:2 --method none
)";

struct DitherOptions {
    std::string input;
    std::string output;
    std::string palette;
    std::string method = "FloydSteinberg";
    std::optional<RawImageLayout> layout;
};

const std::vector<OptionRule> kDitherOptions{
    {"--output", "-o", true}, {"--palette", {}, true}, {"--method", {}, true}, {"--layout", {}, true}};

DitherOptions parseOptions(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("dither", args, kDitherOptions);
    DitherOptions options;
    options.input = onlyOperand("dither", parsed, "input image");
    options.output = parsed.value("--output").value_or("");
    options.palette = parsed.value("--palette").value_or("");
    if (auto method = parsed.value("--method"))
        options.method = choiceOption("dither", "--method", *method, kDitherMethods);
    options.layout = layoutOption("dither", parsed.value("--layout"));
    if (options.output.empty()) throw usageError("dither: give an output file with -o");
    checkOutputName("dither", {options.output, options.layout});
    if (options.palette.empty()) throw usageError("dither: give a palette with --palette");
    return options;
}

int runDither(const std::vector<std::string> &args) {
    const DitherOptions options = parseOptions(args);
    const auto colors = readDitherPalette(options.palette);
    const rh::Image input(readCommandImage({options.input, options.layout}));
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    if (images->alphaChannelQ(input.get()))
        throw CliError(options.input + " has an alpha channel; only opaque images can be dithered");
    const rh::RawArray colorMap(
        makeColorMap(colors, images->getDataType(input.get()), images->getChannels(input.get())));
    const rh::Image result(ditherImage(input.get(), colorMap.get(), options.method));
    writeCommandImage(result.get(), {options.output, options.layout});
    return 0;
}

const RegisterCommand registered{
    {"dither", "map an image to a palette, with or without error diffusion", kDitherHelp, &runDither}};

}  // namespace
}  // namespace tarvex_cli
