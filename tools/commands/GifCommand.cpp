#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ColorExports.h"
#include "Command.h"
#include "PaletteFiles.h"
#include "Escapes.h"
#include "FileAccess.h"
#include "GifFacts.h"
#include "GifFrameInputs.h"
#include "GifWriter.h"
#include "HostTable.h"
#include "ImageOutput.h"
#include "MethodNames.h"
#include "NumberText.h"
#include "Options.h"
#include "Progress.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kGifHelp[] = R"(usage: tarvex gif -o OUT.gif IN... [options]

Writes an animated (or still) GIF file from frames (WriteFrames): PNG or JPEG
pictures, grey or RGB, one frame each, and GIF files, whose composited frames
are taken in order. Every frame must have the same size. RGB frames are
reduced to 256 colours each; grey frames share one map of their levels.

Transparent pixels stay transparent: those of a GIF input's composited
frames, and those of a PNG picture where alpha is below half (128 of 255).
GIF pixels are either shown or not, so partial alpha is thresholded, not
blended; an alpha channel that hides no pixel is ignored. Animations with
transparent pixels take disposal 2 unless --disposal is given, so that each
frame shows as its picture, and are mapped by the tool itself
(WriteColormaps): every frame gets a map of its opaque colours, or of 255
from ImageQuantize when it has more, with one more entry for its transparent
pixels; frames whose maps come out the same share one.

  -o OUT.gif             the file to write; - for standard output
  --delay S[,S...]       seconds each frame shows: one for all, or one per
                         frame (default 0.1)
  --loop N               plays of the animation, 0 for forever (default 0)
  --dither none|floyd-steinberg
                         how RGB frames meet their palette (default
                         floyd-steinberg)
  --interlace            store the rows interlaced
  --comment TEXT         a comment block; may be given more than once
  --background COLOR     the screen's background colour (warned of when the
                         frames share no palette that holds it)
  --transparent COLOR    the colour shown as transparent, in every frame;
                         with alpha, also the colour that transparent pixels
                         are given (else one that no map entry has)
  --disposal D[,D...]    0 unspecified, 1 leave, 2 restore to background,
                         3 restore to previous: one for all, or one per frame
                         (default 0, or 2 with transparent pixels)
  --palette P            write indices against this colour map instead
                         (WriteColormaps): each frame is first mapped to it
                         with DitherImage. P is anything dither --palette
                         takes (colours, a named palette such as web or 332,
                         a text file, an image, a GIF's palette); at most 256
                         colours, 255 when a frame has transparent pixels,
                         which take an entry after them.
  -q, --quiet            no summary and no progress line

An input may be - for standard input. A COLOR is "#rrggbb", "r,g,b" or one
grey level. A one-line summary goes to standard output (not when writing to
standard output); long jobs show their progress on standard error when it is
a terminal.

Examples:
  tarvex gif -o anim.gif frame-*.png --delay 0.08 --loop 0
  tarvex gif -o small.gif big.gif --palette 332 --dither none
)";

struct GifOptions {
    std::string output;
    std::vector<std::string> inputs;
    GifSettings settings;
    std::string palette;
    bool disposalGiven = false;
};

[[noreturn]] void badValue(const std::string &option, const std::string &value, const char *wanted) {
    throw usageError("gif: " + option + " needs " + wanted + ", not '" + value + "'");
}

// The comma-separated numbers of `option`; an item that `fits` refuses is
// named as the user wrote it.
std::vector<double> numberList(const std::string &option, const std::string &text, bool (*fits)(double),
                               const char *wanted) {
    std::vector<double> values;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
        end = text.find(',', start);
        const std::string item = text.substr(start, end == std::string::npos ? end : end - start);
        const double value = realOption("gif", option, item);
        if (!fits(value)) badValue(option, item, wanted);
        values.push_back(value);
    }
    return values;
}

// A GIF keeps a frame's delay in 16 bits of hundredths of a second: larger or
// negative delays would come back as other delays.
bool isDelay(double seconds) { return seconds >= 0 && std::round(seconds * 100) <= 65535; }

bool isDisposal(double mode) { return mode == std::floor(mode) && mode >= 0 && mode <= 3; }

// One colour as 8-bit samples: three channels, or one grey level.
std::vector<double> colorOption(const std::string &option, const std::string &text) {
    std::vector<DitherColor> colors;
    try {
        colors = parseDitherColors(text);
    } catch (const std::invalid_argument &) {
    }
    if (colors.size() != 1 || (colors[0].values.size() != 1 && colors[0].values.size() != 3))
        badValue(option, text, "one colour, #rrggbb, r,g,b or a grey level");
    std::vector<double> samples;
    for (double v : colors[0].values) {
        const double sample = colors[0].fullScale > 0 ? std::round(v * 255 / colors[0].fullScale) : v;
        if (sample < 0 || sample > 255 || sample != std::floor(sample))
            badValue(option, text, "channel values from 0 to 255");
        samples.push_back(sample);
    }
    return samples;
}

const std::vector<OptionRule> kGifOptions{
    {"--output", "-o", true}, {"--delay", {}, true},        {"--loop", {}, true},
    {"--dither", {}, true},   {"--interlace"},              {"--comment", {}, true, true},
    {"--background", {}, true}, {"--transparent", {}, true}, {"--disposal", {}, true},
    {"--palette", {}, true}};

GifOptions parseOptions(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("gif", args, kGifOptions);
    GifOptions options;
    options.output = parsed.value("--output").value_or("");
    options.inputs = parsed.operands();
    options.palette = parsed.value("--palette").value_or("");
    GifSettings &o = options.settings;
    if (auto delays = parsed.value("--delay"))
        o.delays = numberList("--delay", *delays, isDelay, "seconds from 0 to 655.35");
    if (auto loops = parsed.value("--loop")) o.loops = wholeNumberOption("gif", "--loop", *loops, 0, 65535);
    if (auto dither = parsed.value("--dither"))
        o.dither = choiceOption("gif", "--dither", *dither, kDitherMethods);
    o.interlace = parsed.has("--interlace");
    o.comments = parsed.values("--comment");
    if (auto color = parsed.value("--background")) o.background = colorOption("--background", *color);
    if (auto color = parsed.value("--transparent")) o.transparent = colorOption("--transparent", *color);
    options.disposalGiven = parsed.has("--disposal");
    if (auto disposals = parsed.value("--disposal"))
        o.disposals = numberList("--disposal", *disposals, isDisposal, "modes 0 to 3");
    if (options.output.empty()) throw usageError("gif: give the file to write with -o");
    if (options.inputs.empty()) throw usageError("gif: give at least one input picture");
    if (!isStreamTarget(options.output) && imageFormatFor("gif", options.output) != ImageFormat::Gif)
        throw usageError("gif: writes GIF files; name the output FILE.gif");
    options.output = outputPath(options.output);
    return options;
}

void checkPerFrame(const char *option, std::size_t given, mint frames) {
    if (given != 1 && mint(given) != frames)
        throw usageError(std::string("gif: ") + option + " gives " + countOf(long(given), "value") + " for " +
                         countOf(frames, "frame") + "; give one or one per frame");
}

void putColor(std::uint8_t *rgb, std::uint32_t color) {
    rgb[0] = std::uint8_t(color >> 16), rgb[1] = std::uint8_t(color >> 8), rgb[2] = std::uint8_t(color);
}

void appendColor(std::vector<std::uint8_t> &map, std::uint32_t color) {
    map.insert(map.end(), {std::uint8_t(color >> 16), std::uint8_t(color >> 8), std::uint8_t(color)});
}

// A frame as a new RGB host image; transparent pixels take `hidden`, so that
// the mapping of the opaque ones is what it would be without them.
rh::Image rgbFrame(const FramePixels &frame, const FramePlan &plan, std::uint32_t hidden) {
    MImage image = nullptr;
    if (rh_image_new(0, plan.width, plan.height, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image) != 0)
        throw CliError("not enough memory for a frame");
    auto *out = static_cast<std::uint8_t *>(hostTable()->imageFunctions->getRawData(image));
    for (std::size_t i = 0, pixels = std::size_t(plan.width * plan.height); i < pixels; ++i)
        putColor(out + 3 * i, frame.transparent(i) ? hidden : frame.rgb(i));
    return rh::Image(image);
}

// Writes the index of every pixel of `mapped` (which holds only colours of
// `indexOf`) into `out`, and `key` for the transparent pixels of `frame`.
void indicesOf(MImage mapped, const std::unordered_map<std::uint32_t, std::uint8_t> &indexOf,
               const FramePixels &frame, std::uint8_t key, std::uint8_t *out, std::size_t pixels) {
    const auto *rgb = static_cast<const std::uint8_t *>(hostTable()->imageFunctions->getRawData(mapped));
    for (std::size_t i = 0; i < pixels; ++i) out[i] = frame.transparent(i) ? key : indexOf.at(packedRgb(rgb + 3 * i));
}

// First colour from magenta on that no map entry has: an entry of its own
// for the transparent pixels, which no opaque pixel can be taken for.
std::uint32_t unusedColor(const std::vector<std::uint8_t> &maps) {
    std::vector<bool> used(1u << 24);
    for (std::size_t i = 0; i + 2 < maps.size(); i += 3) used[packedRgb(&maps[i])] = true;
    std::uint32_t color = 0xFF00FF;
    while (used[color]) color = (color + 1) & 0xFFFFFF;
    return color;
}

std::optional<std::uint32_t> transparentOption(const GifSettings &s) {
    if (s.transparent.empty()) return std::nullopt;
    if (s.transparent.size() == 1) return std::uint32_t(s.transparent[0]) * 0x010101u;
    return std::uint32_t(s.transparent[0]) << 16 | std::uint32_t(s.transparent[1]) << 8 |
           std::uint32_t(s.transparent[2]);
}

// Frames as indices for WriteColormaps, mapped by the tool itself.
struct IndexedAnimation {
    std::vector<std::uint8_t> mapRgb;  // one map, or one per frame
    mint maps = 1;
    rh::RawArray indices;
    bool anyTransparent = false;
    GifSettings settings;  // with the transparent colour that the indices need
};

// The entry of the colour that shows as transparent: the --transparent
// colour where the map has it, else a new last entry.
std::size_t keyIndex(const std::vector<std::uint8_t> &map, const std::optional<std::uint32_t> &wanted) {
    const std::size_t colors = map.size() / 3;
    if (wanted)
        for (std::size_t i = 0; i < colors; ++i)
            if (packedRgb(&map[3 * i]) == *wanted) return i;
    return colors;
}

// Each frame mapped to the --palette colours by DitherImage. Transparent
// pixels need an entry of their own, after the palette's colours.
IndexedAnimation paletteFrames(const FramePlan &plan, const GifOptions &o) {
    const std::vector<DitherColor> colors = readDitherPalette(o.palette);
    if (colors.empty() || colors.size() > 256)
        throw CliError(o.palette + ": " + std::to_string(colors.size()) + " colours; a GIF map holds 1 to 256");
    const rh::RawArray colorMap(makeColorMap(colors, MImage_Type_Bit8, 3));
    const auto *palette = static_cast<const std::uint8_t *>(hostTable()->rawArrayFunctions->getData(colorMap.get()));
    IndexedAnimation out;
    out.mapRgb.assign(palette, palette + colors.size() * 3);
    out.settings = o.settings;
    const std::optional<std::uint32_t> wanted = transparentOption(o.settings);
    const std::size_t key = keyIndex(out.mapRgb, wanted);
    std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
    for (int i = int(colors.size()) - 1; i >= 0; --i) indexOf[packedRgb(palette + 3 * i)] = std::uint8_t(i);
    const std::size_t pixels = std::size_t(plan.width * plan.height);
    out.indices.reset(newFrameIndices(plan.count(), plan.height, plan.width));
    auto *indices = static_cast<std::uint8_t *>(hostTable()->rawArrayFunctions->getData(out.indices.get()));
    forEachFrame(plan, [&](mint k, const FramePixels &frame) {
        const bool transparent = frame.anyTransparent(pixels);
        // Pictures saved with an alpha channel are often opaque throughout:
        // only a transparent pixel needs the entry after the palette.
        if (transparent && key == 256)
            throw CliError(o.palette + ": 256 colours leave no entry for the transparent pixels of frame " +
                           std::to_string(k + 1) + "; give at most 255");
        out.anyTransparent = out.anyTransparent || transparent;
        const rh::Image image = rgbFrame(frame, plan, packedRgb(palette));
        const rh::Image mapped(ditherImage(image.get(), colorMap.get(), o.settings.dither));
        indicesOf(mapped.get(), indexOf, frame, std::uint8_t(key), indices + std::size_t(k) * pixels, pixels);
    });
    if (out.anyTransparent && key == colors.size()) {
        appendColor(out.mapRgb, wanted.value_or(unusedColor(out.mapRgb)));
        if (!wanted) out.settings.transparent = {double(out.mapRgb[3 * key]), double(out.mapRgb[3 * key + 1]),
                                                 double(out.mapRgb[3 * key + 2])};
    }
    return out;
}

// The palette of one frame's opaque pixels: their own colours when they are
// few enough to leave an entry for transparency, else 255 colours from
// ImageQuantize, kept as the array that DitherImage takes.
struct FramePalette {
    std::vector<std::uint8_t> rgb;
    rh::RawArray quantized;  // none: the pixels' own colours
};

FramePalette opaquePalette(const FramePixels &frame, std::size_t pixels) {
    FramePalette palette;
    std::unordered_set<std::uint32_t> seen;
    std::size_t opaque = 0;
    for (std::size_t i = 0; i < pixels; ++i) {
        if (frame.transparent(i)) continue;
        ++opaque;
        if (seen.size() <= 255 && seen.insert(frame.rgb(i)).second) appendColor(palette.rgb, frame.rgb(i));
    }
    if (seen.size() <= 255) return palette;
    MImage image = nullptr;
    if (rh_image_new(0, mint(opaque), 1, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image) != 0)
        throw CliError("not enough memory for a frame");
    const rh::Image opaquePixels(image);
    auto *rgb = static_cast<std::uint8_t *>(hostTable()->imageFunctions->getRawData(image));
    for (std::size_t i = 0; i < pixels; ++i)
        if (!frame.transparent(i)) putColor(rgb, frame.rgb(i)), rgb += 3;
    QuantizeSettings quantize;
    quantize.colors = 255;
    palette.quantized.reset(quantizeImage(opaquePixels.get(), quantize, true));
    const auto *bytes =
        static_cast<const std::uint8_t *>(hostTable()->rawArrayFunctions->getData(palette.quantized.get()));
    palette.rgb.assign(bytes, bytes + hostTable()->rawArrayFunctions->getFlattenedLength(palette.quantized.get()));
    return palette;
}

// Pictures with alpha: each frame mapped to a palette of its opaque pixels,
// with one more entry for its transparent ones. The export's own reducer is
// not used, since it could merge that entry with a near opaque colour, or
// dither pixels into and out of it.
IndexedAnimation alphaFrames(const FramePlan &plan, const GifOptions &o) {
    IndexedAnimation out;
    out.settings = o.settings;
    const std::optional<std::uint32_t> wanted = transparentOption(o.settings);
    const std::size_t pixels = std::size_t(plan.width * plan.height);
    out.indices.reset(newFrameIndices(plan.count(), plan.height, plan.width));
    auto *indices = static_cast<std::uint8_t *>(hostTable()->rawArrayFunctions->getData(out.indices.get()));
    std::vector<std::vector<std::uint8_t>> palettes;
    forEachFrame(plan, [&](mint k, const FramePixels &frame) {
        FramePalette palette = opaquePalette(frame, pixels);
        // At most 255 colours: the entry after them is still an index.
        const auto key = std::uint8_t(keyIndex(palette.rgb, wanted));
        std::unordered_map<std::uint32_t, std::uint8_t> indexOf;
        for (int i = int(palette.rgb.size() / 3) - 1; i >= 0; --i)
            indexOf[packedRgb(&palette.rgb[3 * i])] = std::uint8_t(i);
        std::uint8_t *frameIndices = indices + std::size_t(k) * pixels;
        if (palette.quantized) {
            const rh::Image image = rgbFrame(frame, plan, packedRgb(palette.rgb.data()));
            const rh::Image mapped(ditherImage(image.get(), palette.quantized.get(), o.settings.dither));
            indicesOf(mapped.get(), indexOf, frame, key, frameIndices, pixels);
        } else {
            for (std::size_t i = 0; i < pixels; ++i)
                frameIndices[i] = frame.transparent(i) ? key : indexOf.at(frame.rgb(i));
        }
        out.anyTransparent = out.anyTransparent || frame.anyTransparent(pixels);
        palettes.push_back(std::move(palette.rgb));
    });
    // Every map gets the entry, so that one transparent colour serves all frames.
    std::size_t colors = 0;
    for (const auto &palette : palettes) colors = std::max(colors, palette.size() / 3 + 1);
    std::vector<std::uint8_t> all;
    for (const auto &palette : palettes) all.insert(all.end(), palette.begin(), palette.end());
    const std::uint32_t key = wanted.value_or(unusedColor(all));
    for (auto &palette : palettes) {
        appendColor(palette, key);
        palette.resize(colors * 3, 0);
        out.mapRgb.insert(out.mapRgb.end(), palette.begin(), palette.end());
    }
    // Frames of one map share it: the file holds it once, and the screen can
    // take a --background from it.
    const bool shared = std::all_of(palettes.begin(), palettes.end(),
                                    [&](const std::vector<std::uint8_t> &p) { return p == palettes.front(); });
    out.maps = shared ? 1 : mint(palettes.size());
    out.mapRgb.resize(std::size_t(out.maps) * colors * 3);
    if (out.anyTransparent && !wanted)
        out.settings.transparent = {double(key >> 16), double(key >> 8 & 0xFF), double(key & 0xFF)};
    return out;
}

// The screen holds a background colour only when every frame shares one
// palette; the export then takes white, black or the first entry when the
// colour is not in it. Users are told rather than left to find it out.
void warnIfBackgroundLost(const std::vector<double> &wanted, const std::string &file) {
    if (wanted.empty() || isQuiet()) return;
    std::optional<std::vector<int>> written;
    try {
        written = rgbBytes(ruleValue(askGifReader("ReadFileMetadata", file).get(), "Background"));
    } catch (const CliError &) {
        return;  // a device, which cannot be read back
    }
    std::vector<int> rgb(wanted.begin(), wanted.end());
    if (rgb.size() == 1) rgb.assign(3, rgb[0]);
    if (written == rgb) return;
    const std::string instead =
        written ? "the screen's background is " + std::to_string((*written)[0]) + "," + std::to_string((*written)[1]) +
                      "," + std::to_string((*written)[2])
                : "the screen has no background: the frames have palettes of their own";
    std::fprintf(stderr, "tarvex: gif: warning: --background is not in the shared palette; %s\n", instead.c_str());
}

int runGif(const std::vector<std::string> &args) {
    const auto start = std::chrono::steady_clock::now();
    GifOptions o = parseOptions(args);
    const FramePlan plan = planFrames(o.inputs);
    // Frames are whole pictures: what one leaves must not show through the
    // transparent pixels of the next.
    if (plan.alpha && !o.disposalGiven) o.settings.disposals = {2};
    checkPerFrame("--delay", o.settings.delays.size(), plan.count());
    checkPerFrame("--disposal", o.settings.disposals.size(), plan.count());
    // Indices take a byte a pixel; WriteFrames takes the frames' samples.
    const bool indexed = !o.palette.empty() || plan.alpha;
    checkFramesFit(plan, indexed ? 1 : int(plan.channels));
    std::optional<IndexedAnimation> animation;
    rh::Image image;
    if (!o.palette.empty()) animation = paletteFrames(plan, o);
    else if (plan.alpha) animation = alphaFrames(plan, o);
    else image.reset(frameImage(plan));
    std::uintmax_t bytes = 0;
    writeOutput(o.output, [&](const std::string &file) {
        if (animation)
            writeIndexedGif(animation->mapRgb, animation->maps, animation->indices.get(), animation->settings, file);
        else
            writeImageGif(image.get(), o.settings, file);
        std::error_code unsized;  // a device has no size
        bytes = std::filesystem::file_size(file, unsized);
        warnIfBackgroundLost(o.settings.background, file);
    });
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!isQuiet() && !isStreamTarget(o.output))
        std::printf("%s: %lld %s of %lldx%lld, %llu bytes, %.2f s\n", o.output.c_str(),
                    static_cast<long long>(plan.count()), plan.count() == 1 ? "frame" : "frames",
                    static_cast<long long>(plan.width), static_cast<long long>(plan.height),
                    static_cast<unsigned long long>(bytes), seconds);
    return 0;
}

const RegisterCommand registered{
    {"gif", "write an animated GIF from PNG, JPEG or GIF frames", kGifHelp, &runGif}};

}  // namespace
}  // namespace tarvex_cli
