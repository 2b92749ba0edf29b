#include "GifFrameInputs.h"

#include <cstdint>
#include <cstring>
#include <fstream>

#include "Command.h"
#include "FileAccess.h"
#include "GifFacts.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "NumberText.h"
#include "Progress.h"
#include "host/MemoryBudget.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

bool isGifFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    char magic[4] = {};
    in.read(magic, 4);
    return in && std::memcmp(magic, "GIF8", 4) == 0;
}

std::string sizeText(mint width, mint height) { return std::to_string(width) + "x" + std::to_string(height); }

// Takes one input's frame size and colour channels into the plan.
void fitInput(FramePlan &plan, const std::string &name, mint width, mint height, mint colorChannels) {
    if (plan.channels == 0) {
        plan.width = width, plan.height = height;
    } else if (width != plan.width || height != plan.height) {
        throw CliError(name + " is " + sizeText(width, height) + ", the frames before it " +
                       sizeText(plan.width, plan.height) + "; every frame must have one size");
    }
    if (colorChannels == 3 || plan.channels == 0) plan.channels = colorChannels;
}

// Whether a picture's alpha makes any pixel transparent. Many pictures carry
// an alpha channel that hides nothing; they are written as the same picture
// without it would be, through the export's own colour reduction.
bool hidesAPixel(MImage picture) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    if (!images->alphaChannelQ(picture) || images->getDataType(picture) != MImage_Type_Bit8) return false;
    const FramePixels pixels{static_cast<const std::uint8_t *>(images->getRawData(picture)),
                             int(images->getChannels(picture)) - 1, true};
    return pixels.anyTransparent(std::size_t(images->getRowCount(picture) * images->getColumnCount(picture)));
}

rh::Image gifFrame(const std::string &path, long number) {
    const RhValue args[2] = {{RH_STRING, {.string = path.c_str()}, 0}, {RH_INTEGER, {.integer = number}, 0}};
    RhValue result{RH_IMAGE, {}, 0};
    const int code = rh_call(plugin(), "ReadOneFrame", 2, args, &result);
    if (code != 0) throw CliError(importFailure(path, code));
    return rh::Image(result.value.image);
}

// Only frames with a transparent colour, or smaller than the screen, can
// show a transparent pixel; those are composited once more to see.
bool gifHidesAPixel(const std::string &path) {
    const ImportExpr frames = askGifReader("ReadFrameMetadata", path);
    for (std::size_t k = 0; k < rh_expr_length(frames.get()); ++k)
        if (rh_expr_integer(ruleValue(rh_expr_part(frames.get(), k), "Channels")) == 4 &&
            hidesAPixel(gifFrame(path, long(k) + 1).get()))
            return true;
    return false;
}

FrameInput planGif(FramePlan &plan, const std::string &path) {
    const ImportExpr metadata = askGifReader("ReadFileMetadata", path);
    FrameInput input{path, true, static_cast<long>(rh_expr_integer(ruleValue(metadata.get(), "ImageCount")))};
    const RhExpr *size = ruleValue(metadata.get(), "ImageSize");
    // The plug-in composites GIF frames to RGB pictures.
    fitInput(plan, path, mint(rh_expr_integer(rh_expr_part(size, 0))), mint(rh_expr_integer(rh_expr_part(size, 1))),
             3);
    input.alpha = gifHidesAPixel(path);
    return input;
}

FrameInput planPicture(FramePlan &plan, const std::string &path) {
    const PictureShape shape = readImageShape(path);
    if (shape.bits != 8) throw CliError(path + ": only 8-bit pictures can go into a GIF file");
    const mint colorChannels = shape.alpha ? shape.channels - 1 : shape.channels;
    if (colorChannels != 1 && colorChannels != 3)
        throw CliError(path + ": " + std::to_string(shape.channels) + " channels; frames are grey or RGB");
    fitInput(plan, path, shape.width, shape.height, colorChannels);
    return {path, false, 1, shape.alpha && hidesAPixel(rh::Image(readImageFile(path)).get())};
}

// Checks that a decoded picture is what its header promised: a file can
// change between the two readings.
FramePixels framePixels(MImage image, const FramePlan &plan, const std::string &name, bool dropAlpha) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const bool alpha = images->alphaChannelQ(image) != 0;
    FramePixels pixels{static_cast<const std::uint8_t *>(images->getRawData(image)),
                       int(images->getChannels(image)) - (alpha ? 1 : 0), alpha};
    if (images->getDataType(image) != MImage_Type_Bit8 || images->getColumnCount(image) != plan.width ||
        images->getRowCount(image) != plan.height || (pixels.colorChannels != 1 && pixels.colorChannels != 3) ||
        (pixels.colorChannels == 3 && plan.channels == 1))
        throw CliError(name + " changed while it was read");
    pixels.alphaIgnored = dropAlpha;
    return pixels;
}

// Gives up the plug-in's decoded copy of a GIF input whose frames were taken.
void forgetGif(const std::string &path) {
    RhValue arg{RH_STRING, {.string = path.c_str()}, 0};
    RhValue result{RH_BOOLEAN, {}, 0};
    rh_call(plugin(), "ClearCache", 1, &arg, &result);
}

}  // namespace

mint FramePlan::count() const {
    mint frames = 0;
    for (const FrameInput &input : inputs) frames += input.frames;
    return frames;
}

std::uint32_t FramePixels::rgb(std::size_t pixel) const {
    const std::uint8_t *s = samples + pixel * std::size_t(stride());
    if (colorChannels == 1) return std::uint32_t(s[0]) * 0x010101u;
    return packedRgb(s);
}

bool FramePixels::anyTransparent(std::size_t pixels) const {
    for (std::size_t i = 0; i < pixels; ++i)
        if (transparent(i)) return true;
    return false;
}

FramePlan planFrames(const std::vector<std::string> &arguments) {
    FramePlan plan;
    for (const std::string &argument : arguments) {
        const std::string path = readablePath(argument);
        plan.inputs.push_back(isGifFile(path) ? planGif(plan, path) : planPicture(plan, path));
        plan.alpha = plan.alpha || plan.inputs.back().alpha;
    }
    return plan;
}

// A small file can hold thousands of frames of a large canvas, so the frames
// are counted against the budget before any is decoded.
void checkFramesFit(const FramePlan &plan, int bytesPerPixel) {
    const std::uint64_t budget = OstrelUtils::memoryBudget();
    long double bytes = 0;
    for (const FrameInput &input : plan.inputs) {
        bytes += static_cast<long double>(input.frames) * plan.width * plan.height * bytesPerPixel;
        if (bytes > static_cast<long double>(budget))
            throw CliError(input.path + ": " + countOf(input.frames, "frame") + " of " +
                           sizeText(plan.width, plan.height) + " would take more memory than the budget of " +
                           std::to_string(budget >> 20) + " MiB (TARVEX_MEMORY_BUDGET)");
    }
}

void forEachFrame(const FramePlan &plan, const std::function<void(mint, const FramePixels &)> &take) {
    Progress progress("gif: inputs read", plan.inputs.size());
    mint frame = 0;
    for (std::size_t i = 0; i < plan.inputs.size(); ++i) {
        const FrameInput &input = plan.inputs[i];
        if (!input.gif) {
            const rh::Image picture(readImageFile(input.path));
            take(frame++, framePixels(picture.get(), plan, input.path, !input.alpha));
        } else {
            for (long number = 1; number <= input.frames; ++number) {
                const rh::Image picture = gifFrame(input.path, number);
                const std::string name = input.path + " frame " + std::to_string(number);
                take(frame++, framePixels(picture.get(), plan, name, !input.alpha));
            }
            forgetGif(input.path);
        }
        progress.advance(i + 1);
    }
}

MImage frameImage(const FramePlan &plan) {
    MImage image = nullptr;
    const MImage_CS_Type space = plan.channels == 1 ? MImage_CS_Gray : MImage_CS_RGB;
    if (rh_image_new(plan.count(), plan.width, plan.height, plan.channels, MImage_Type_Bit8, space, 1, 0, &image) != 0)
        throw CliError("not enough memory for " + std::to_string(plan.count()) + " frames");
    rh::Image owned(image);
    auto *slices = static_cast<std::uint8_t *>(hostTable()->imageFunctions->getRawData(image));
    const std::size_t pixels = std::size_t(plan.width * plan.height);
    forEachFrame(plan, [&](mint k, const FramePixels &frame) {
        std::uint8_t *out = slices + std::size_t(k) * pixels * std::size_t(plan.channels);
        for (std::size_t i = 0; i < pixels; ++i) {
            const std::uint8_t *pixel = frame.samples + i * std::size_t(frame.stride());
            for (mint c = 0; c < plan.channels; ++c) *out++ = pixel[frame.colorChannels == 1 ? 0 : c];
        }
    });
    return owned.release();
}

}  // namespace tarvex_cli
