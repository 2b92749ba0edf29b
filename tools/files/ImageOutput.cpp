#include "ImageOutput.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>

#include "Command.h"
#include "FileAccess.h"
#include "GifWriter.h"
#include "ImageFiles.h"

namespace tarvex_cli {
namespace {

std::optional<ImageFormat> formatOf(const std::string &path) {
    if (isStreamTarget(path)) return ImageFormat::Png;
    const std::string extension = lowerCaseExtension(path);
    if (extension == ".png") return ImageFormat::Png;
    if (extension == ".gif") return ImageFormat::Gif;
    return std::nullopt;
}

}  // namespace

std::string lowerCaseExtension(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

ImageFormat imageFormatFor(const std::string &command, const std::string &path) {
    if (auto format = formatOf(path)) return *format;
    throw usageError(command + ": cannot write " + path + ": the tool writes PNG (.png) and GIF (.gif) files");
}

void writeImage(MImage image, const std::string &path) {
    const std::optional<ImageFormat> format = formatOf(path);
    if (!format) throw CliError("cannot write " + path + ": the tool writes PNG (.png) and GIF (.gif) files");
    if (*format == ImageFormat::Png) {
        writePng(image, 0, path);
        return;
    }
    GifSettings settings;
    settings.dither = "None";
    settings.loops = 1;
    const IndexedFrames frames = indexedFramesOf(image, path);
    writeOutput(path, [&](const std::string &file) { writeIndexedGif(frames, settings, file); });
}

}  // namespace tarvex_cli
