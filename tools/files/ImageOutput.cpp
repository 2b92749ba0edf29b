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

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "gif:OUT" and "png:OUT" name the format outright: a stream such as
// standard output ("gif:-") has no extension to go by.
std::optional<ImageFormat> namedFormat(const std::string &output) {
    if (output.size() <= 4) return std::nullopt;
    const std::string prefix = lowerCase(output.substr(0, 4));
    if (prefix == "gif:") return ImageFormat::Gif;
    if (prefix == "png:") return ImageFormat::Png;
    return std::nullopt;
}

std::optional<ImageFormat> formatOf(const std::string &output) {
    if (auto named = namedFormat(output)) return named;
    if (isStreamTarget(output)) return ImageFormat::Png;
    const std::string extension = lowerCaseExtension(output);
    if (extension == ".png") return ImageFormat::Png;
    if (extension == ".gif") return ImageFormat::Gif;
    return std::nullopt;
}

}  // namespace

std::string lowerCaseExtension(const std::string &path) {
    return lowerCase(std::filesystem::path(path).extension().string());
}

std::string outputPath(const std::string &output) { return namedFormat(output) ? output.substr(4) : output; }

ImageFormat imageFormatFor(const std::string &command, const std::string &output) {
    if (auto format = formatOf(output)) return *format;
    throw usageError(command + ": cannot write " + output +
                     ": the tool writes PNG (.png) and GIF (.gif) files, or gif:OUT and png:OUT");
}

void writeImage(MImage image, const std::string &output) {
    const std::optional<ImageFormat> format = formatOf(output);
    const std::string path = outputPath(output);
    if (!format) throw CliError("cannot write " + path + ": the tool writes PNG (.png) and GIF (.gif) files");
    if (*format == ImageFormat::Png) {
        writePng(image, 0, path);
        return;
    }
    GifSettings settings;
    settings.dither = "None";
    settings.loops = 1;
    // Its refusals name the output as a user would: "gif:-" is no file "-".
    const IndexedFrames frames = indexedFramesOf(image, isStandardStream(path) ? "standard output" : path);
    writeOutput(path, [&](const std::string &file) { writeIndexedGif(frames, settings, file); });
}

}  // namespace tarvex_cli
