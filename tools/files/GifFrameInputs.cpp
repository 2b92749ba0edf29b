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

// Adds the colour samples of one 8-bit image; `dropAlpha` removes a last alpha
// channel (a GIF frame's transparency has already been composited).
void appendImage(FrameSequence &frames, MImage image, const std::string &path, bool dropAlpha) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    if (images->getDataType(image) != MImage_Type_Bit8)
        throw CliError(path + ": only 8-bit pictures can go into a GIF file");
    const mint channels = images->getChannels(image);
    const bool alpha = images->alphaChannelQ(image) != 0;
    if (alpha && !dropAlpha)
        throw CliError(path + " has an alpha channel; give opaque frames (--transparent marks a colour)");
    const mint colorChannels = alpha ? channels - 1 : channels;
    if (colorChannels != 1 && colorChannels != 3)
        throw CliError(path + ": " + std::to_string(channels) + " channels; frames are grey or RGB");
    const mint width = images->getColumnCount(image), height = images->getRowCount(image);
    if (frames.channels == 0) {
        frames.width = width, frames.height = height, frames.channels = colorChannels;
    } else if (width != frames.width || height != frames.height) {
        throw CliError(path + " is " + std::to_string(width) + "x" + std::to_string(height) +
                       ", the frames before it " + std::to_string(frames.width) + "x" +
                       std::to_string(frames.height) + "; every frame must have one size");
    }
    if (colorChannels == 3 && frames.channels == 1) frames.promoteToRgb();
    const auto *data = static_cast<const std::uint8_t *>(images->getRawData(image));
    for (mint i = 0; i < width * height; ++i) {
        const std::uint8_t *pixel = data + i * channels;
        for (mint c = 0; c < frames.channels; ++c)
            frames.samples.push_back(pixel[colorChannels == 1 ? 0 : c]);
    }
}

// A small file can hold thousands of frames of a large canvas. They are all
// held here and once more in the image for WriteFrames, so a file whose
// frames would not fit the budget twice over is refused before any is read.
void checkFramesFit(const FrameSequence &frames, const std::string &path, long count, const RhExpr *metadata) {
    const RhExpr *size = ruleValue(metadata, "ImageSize");
    const auto width = std::uint64_t(rh_expr_integer(rh_expr_part(size, 0)));
    const auto height = std::uint64_t(rh_expr_integer(rh_expr_part(size, 1)));
    const long double bytes = 2.0L * (static_cast<long double>(frames.samples.size()) +
                                      static_cast<long double>(count) * width * height * 3);
    const std::uint64_t budget = OstrelUtils::memoryBudget();
    if (bytes > static_cast<long double>(budget))
        throw CliError(path + ": " + countOf(count, "frame") + " of " + std::to_string(width) + "x" +
                       std::to_string(height) + " would take more memory than the budget of " +
                       std::to_string(budget >> 20) + " MiB (TARVEX_MEMORY_BUDGET)");
}

void appendGifFrames(FrameSequence &frames, const std::string &path) {
    const ImportExpr metadata = askGifReader("ReadFileMetadata", path);
    const long count = static_cast<long>(rh_expr_integer(ruleValue(metadata.get(), "ImageCount")));
    checkFramesFit(frames, path, count, metadata.get());
    for (long number = 1; number <= count; ++number) {
        const RhValue args[2] = {{RH_STRING, {.string = path.c_str()}, 0},
                                 {RH_INTEGER, {.integer = number}, 0}};
        RhValue result{RH_IMAGE, {}, 0};
        const int code = rh_call(plugin(), "ReadOneFrame", 2, args, &result);
        if (code != 0) throw CliError(importFailure(path, code));
        const rh::Image frame(result.value.image);
        appendImage(frames, frame.get(), path + " frame " + std::to_string(number), true);
    }
}

}  // namespace

void FrameSequence::promoteToRgb() {
    if (channels != 1) return;
    std::vector<std::uint8_t> rgb;
    rgb.reserve(samples.size() * 3);
    for (std::uint8_t level : samples) rgb.insert(rgb.end(), {level, level, level});
    samples = std::move(rgb);
    channels = 3;
}

void appendFrames(FrameSequence &frames, const std::string &argument) {
    const std::string path = readablePath(argument);
    if (isGifFile(path)) {
        appendGifFrames(frames, path);
        return;
    }
    const rh::Image picture(readImageFile(path));
    appendImage(frames, picture.get(), path, false);
}

MImage frameImage(const FrameSequence &frames) {
    MImage image = nullptr;
    const MImage_CS_Type space = frames.channels == 1 ? MImage_CS_Gray : MImage_CS_RGB;
    if (rh_image_new(frames.count(), frames.width, frames.height, frames.channels, MImage_Type_Bit8,
                     space, 1, 0, &image) != 0)
        throw CliError("not enough memory for " + std::to_string(frames.count()) + " frames");
    std::memcpy(hostTable()->imageFunctions->getRawData(image), frames.samples.data(),
                frames.samples.size());
    return image;
}

}  // namespace tarvex_cli
