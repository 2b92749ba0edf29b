#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "BinaryFiles.h"
#include "ColorExports.h"
#include "Command.h"
#include "CommandImages.h"
#include "FileAccess.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "ImageOutput.h"
#include "MethodNames.h"
#include "NumberText.h"
#include "Options.h"
#include "PaletteText.h"
#include "Progress.h"
#include "ResultFiles.h"
#include "ResultText.h"
#include "TypeNames.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kQuantizeHelp[] = R"(usage: tarvex quantize IN -o OUT [--colors N] [--method median-cut|wu|octree]
                       [--dither none|floyd-steinberg] [--bits B]
                       [--palette-out FILE] [--indices-out FILE] [--layout LAYOUT]

Reduces an image to at most N colours and redraws it with them
(GetQuantizedImage). An image that has no more than N colours already comes
back as it is.

  -o, --output OUT      the redrawn image: .png, or .gif for 8-bit grey or RGB
                        images and at most 256 colours; - is PNG on standard
                        output, gif:- GIF (gif:OUT and png:OUT choose the
                        format whatever OUT's extension)
  --colors N            the palette's size, 1 to 65536 (default 256)
  --method M            median-cut, wu (the default) or octree; the plug-in's
                        numbers 1, 2, 3 are taken too
  --dither D            floyd-steinberg (the default) or none; also
                        FloydSteinberg, None
  --bits B              the method's precision, 2 to 8 bits a channel
                        (default 6, but 5 for wu on four channels; 1-bit
                        images ignore it)
  --palette-out FILE    also write the palette (ImageQuantize), one colour a
                        line, in the form --palette reads back
  --indices-out FILE    also write every pixel's palette index
                        (ImageQuantize): a grey PNG for FILE.png (8-bit up to
                        256 colours, else 16-bit), otherwise the raw elements
                        (- for standard output; at most one output can be -)
  --layout LAYOUT       IN is a raw sample file of this layout (how 32-bit and
                        64-bit real images travel), and OUT is written as one

IN is a PNG (8 or 16 bits; grey, grey+alpha, RGB or RGBA) or JPEG file, or -
for standard input. Alpha is quantized as an ordinary last channel, so that
transparent pixels keep their own colours. A 16-bit image stays 16-bit.
One line on standard error tells the colours produced and the time taken.

Examples:
  tarvex quantize photo.png -o photo-16.png --colors 16
  tarvex quantize photo.png -o photo.gif --method octree --dither none
  tarvex quantize photo.png -o out.png --palette-out colours.txt
)";

struct QuantizeOptions {
    ImageLocation input, output;
    QuantizeSettings settings;
    std::string paletteOut, indicesOut;
};

const std::vector<OptionRule> kQuantizeOptions{
    {"--output", "-o", true},       {"--colors", {}, true},      {"--method", {}, true},
    {"--dither", {}, true},         {"--bits", {}, true},        {"--palette-out", {}, true},
    {"--indices-out", {}, true},    {"--layout", {}, true}};

QuantizeOptions parseOptions(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("quantize", args, kQuantizeOptions);
    if (!parsed.has("--output")) throw usageError("quantize: give an output file with -o");
    QuantizeOptions options;
    const auto layout = layoutOption("quantize", parsed.value("--layout"));
    options.input = {onlyOperand("quantize", parsed, "input image"), layout};
    options.output = {*parsed.value("--output"), layout};
    QuantizeSettings &s = options.settings;
    if (auto colors = parsed.value("--colors")) s.colors = wholeNumberOption("quantize", "--colors", *colors, 1, 65536);
    if (auto method = parsed.value("--method")) s.method = choiceOption("quantize", "--method", *method, kQuantizeMethods);
    if (auto dither = parsed.value("--dither")) s.dither = choiceOption("quantize", "--dither", *dither, kDitherMethods);
    if (auto bits = parsed.value("--bits")) s.bits = wholeNumberOption("quantize", "--bits", *bits, 2, 8);
    options.paletteOut = parsed.value("--palette-out").value_or("");
    options.indicesOut = parsed.value("--indices-out").value_or("");
    checkOutputName("quantize", options.output);
    // Two files on one stream could not be told apart again.
    const int onStandardOutput = int(isStandardStream(outputPath(options.output.path))) +
                                 int(isStandardStream(options.paletteOut)) + int(isStandardStream(options.indicesOut));
    if (onStandardOutput > 1)
        throw usageError("quantize: only one of -o, --palette-out and --indices-out can be - (standard output)");
    if (!layout && imageFormatFor("quantize", options.output.path) == ImageFormat::Gif && s.colors > 256)
        throw usageError("quantize: a GIF file holds at most 256 colours; give --colors 256 or fewer, or write PNG");
    return options;
}

// Indices as a grey PNG, when they fit in 16 bits.
void writeIndexPng(MRawArray indices, const std::string &path) {
    const QuorbelRawArrayFunctions arrays = hostTable()->rawArrayFunctions;
    const MRawArray_Data_Type type = arrays->getType(indices);
    if (type != MRawArray_Type_UBit8 && type != MRawArray_Type_UBit16)
        throw CliError(path + ": indices past 65,535 do not fit a PNG; write them raw (another extension)");
    const mint *dimensions = arrays->getDimensions(indices);
    MImage image = nullptr;
    if (rh_image_new(0, dimensions[2], dimensions[1], 1, type == MRawArray_Type_UBit8 ? MImage_Type_Bit8 : MImage_Type_Bit16,
                     MImage_CS_Gray, QUORBEL_TRUE, QUORBEL_FALSE, &image) != 0)
        throw CliError("the host cannot make an image of the indices");
    const rh::Image owned(image);
    const std::size_t bytes = std::size_t(dimensions[1] * dimensions[2]) * (type == MRawArray_Type_UBit8 ? 1 : 2);
    std::memcpy(hostTable()->imageFunctions->getRawData(image), arrays->getData(indices), bytes);
    writePng(image, 0, path);
}

// The answers the command writes. With the indices asked for, the redrawn
// image is their palette colours: GetQuantizedImage maps with the same
// ditherer as ImageQuantize's indices, so a third run of the method would
// only repeat one of the other two.
struct Quantized {
    QuantizedImage image;
    rh::RawArray palette, indices;
};

Quantized quantizeAll(MImage input, const QuantizeOptions &options) {
    const QuantizeSettings &s = options.settings;
    Quantized answers;
    const bool redrawFromIndices = !options.indicesOut.empty() && !quantizingKeeps(input, s.colors);
    if (redrawFromIndices) {
        answers.palette.reset(quantizeImage(input, s, true));
        answers.indices.reset(quantizeImage(input, s, false));
        answers.image.owned.reset(paletteAtIndices(input, answers.palette.get(), answers.indices.get()));
        answers.image.image = answers.image.owned.get();
        return answers;
    }
    answers.image = quantizedImage(input, s);
    if (!options.paletteOut.empty()) answers.palette.reset(quantizeImage(input, s, true));
    if (!options.indicesOut.empty()) answers.indices.reset(quantizeImage(input, s, false));
    return answers;
}

void writeIndices(MRawArray indices, const std::string &path) {
    if (lowerCaseExtension(path) == ".png") {
        writeIndexPng(indices, path);
    } else if (isStandardStream(path)) {
        writeOutput(path, [&](const std::string &file) { saveRawArray(indices, file); });
        if (!isQuiet()) {
            const QuorbelRawArrayFunctions arrays = hostTable()->rawArrayFunctions;
            std::string dimensions;
            for (mint extent : rawArrayDimensions(indices))
                dimensions.append(dimensions.empty() ? "" : "x").append(std::to_string(extent));
            std::fprintf(stderr, "tarvex quantize: indices on standard output, %s elements, dims=%s\n",
                         rawElementType(arrays->getType(indices)).shortName, dimensions.c_str());
        }
    } else {
        const std::string saved = saveRawArray(indices, path);
        if (!isQuiet()) std::fprintf(stderr, "tarvex quantize: indices in %s\n", saved.c_str());
    }
}

int runQuantize(const std::vector<std::string> &args) {
    const auto start = std::chrono::steady_clock::now();
    const QuantizeOptions options = parseOptions(args);
    const rh::Image read(readCommandImage(options.input));
    const rh::Image opaque(withAlphaAsChannel(read.get()));
    MImage input = opaque ? opaque.get() : read.get();
    const Quantized answers = quantizeAll(input, options);
    const QuantizedImage &result = answers.image;
    writeCommandImage(result.image, options.output);
    if (!options.paletteOut.empty()) {
        const std::string text = paletteText(answers.palette.get());
        writeOutput(options.paletteOut, [&](const std::string &file) { writeTextFile(file, text); });
    }
    if (!options.indicesOut.empty()) writeIndices(answers.indices.get(), options.indicesOut);
    // The plug-in may flag the last of two or four channels of its result as alpha.
    const rh::Image countable(withAlphaAsChannel(result.image));
    const long long produced = uniqueColors(countable ? countable.get() : result.image, false);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!isQuiet())
        std::fprintf(stderr, "tarvex quantize: %s%s, %.2f s\n", countOf(produced, "colour").c_str(),
                     result.unchanged ? " (already no more than --colors: the image is unchanged)" : "", seconds);
    return 0;
}

const RegisterCommand registered{
    {"quantize", "reduce an image to a palette of N colours and redraw it", kQuantizeHelp, &runQuantize}};

}  // namespace
}  // namespace tarvex_cli
