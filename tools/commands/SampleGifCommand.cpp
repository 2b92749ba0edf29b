#include <algorithm>
#include <memory>
#include <vector>

#include <gif_lib.h>

#include "Command.h"
#include "FileAccess.h"
#include "ImageOutput.h"
#include "Options.h"

namespace tarvex_cli {
namespace {

const char kSampleGifHelp[] = R"(usage: tarvex sample-gif [-o] OUT.gif    (- for standard output)

Writes a small animated GIF (24x24, five frames, looping forever) that shows
what the import side composites: a white card on a transparent background,
then squares with a transparent border that are each cleared back to the
background after they were shown (leaving a hole in the card), and a last
frame with its own palette that is undone again ("previous" disposal).
Try it with info, frames and palette.
)";

constexpr int kSize = 24;
// Global palette: 0 transparent grey, 1 white, 2 red, 3 blue.
const std::vector<GifColorType> kGlobal{{128, 128, 128}, {255, 255, 255}, {220, 30, 30}, {30, 60, 200}};
const std::vector<GifColorType> kLocal{{0, 0, 0}, {255, 200, 0}};

struct Frame {
    int left, top, width, height;
    std::vector<GifPixelType> pixels;
    int disposal, transparent, delay;
    bool local = false;
};

Frame filled(int left, int top, int width, int height, GifPixelType index, int disposal, int delay) {
    return {left, top, width, height,
            std::vector<GifPixelType>(static_cast<std::size_t>(width * height), index), disposal, -1, delay};
}

// A square of `index` with a transparent one-pixel border (index 0).
Frame square(int left, int top, GifPixelType index) {
    Frame frame = filled(left, top, 8, 8, index, DISPOSE_BACKGROUND, 30);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            if (x == 0 || y == 0 || x == 7 || y == 7) frame.pixels[static_cast<std::size_t>(y * 8 + x)] = 0;
    frame.transparent = 0;
    return frame;
}

std::vector<Frame> sampleFrames() {
    std::vector<Frame> frames{filled(2, 2, 20, 20, 1, DISPOSE_DO_NOT, 50), square(2, 2, 2), square(8, 8, 2),
                              square(14, 14, 3)};
    Frame flash = filled(4, 16, 6, 6, 1, DISPOSE_PREVIOUS, 20);
    flash.local = true;
    frames.push_back(flash);
    return frames;
}

struct MapDeleter {
    void operator()(ColorMapObject *map) const { GifFreeMapObject(map); }
};

std::unique_ptr<ColorMapObject, MapDeleter> colorMap(const std::vector<GifColorType> &colors) {
    return std::unique_ptr<ColorMapObject, MapDeleter>(
        GifMakeMapObject(static_cast<int>(colors.size()), colors.data()));
}

void check(GifFileType *gif, int status, const std::string &path) {
    if (status == GIF_OK) return;
    throw CliError("cannot write " + path + ": " + GifErrorString(gif->Error));
}

void putFrame(GifFileType *gif, const Frame &frame, const std::string &path) {
    GraphicsControlBlock gcb{frame.disposal, false, frame.delay, frame.transparent};
    GifByteType extension[4];
    EGifGCBToExtension(&gcb, extension);
    check(gif, EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension), path);
    // The encoder does not free the previous image's local map when it takes
    // the next one.
    if (gif->Image.ColorMap != nullptr) {
        GifFreeMapObject(gif->Image.ColorMap);
        gif->Image.ColorMap = nullptr;
    }
    auto local = frame.local ? colorMap(kLocal) : nullptr;
    check(gif, EGifPutImageDesc(gif, frame.left, frame.top, frame.width, frame.height, false, local.get()), path);
    std::vector<GifPixelType> row(static_cast<std::size_t>(frame.width));
    for (int y = 0; y < frame.height; ++y) {
        std::copy_n(frame.pixels.begin() + y * frame.width, frame.width, row.begin());
        check(gif, EGifPutLine(gif, row.data(), frame.width), path);
    }
}

void putLoopForever(GifFileType *gif, const std::string &path) {
    const GifByteType identifier[] = "NETSCAPE2.0";
    const GifByteType count[] = {1, 0, 0};
    check(gif, EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE), path);
    check(gif, EGifPutExtensionBlock(gif, 11, identifier), path);
    check(gif, EGifPutExtensionBlock(gif, 3, count), path);
    check(gif, EGifPutExtensionTrailer(gif), path);
}

void writeSample(GifFileType *gif, const std::string &path) {
    EGifSetGifVersion(gif, true);
    auto global = colorMap(kGlobal);
    check(gif, EGifPutScreenDesc(gif, kSize, kSize, 8, 0, global.get()), path);
    putLoopForever(gif, path);
    check(gif, EGifPutComment(gif, "sample animation written by tarvex sample-gif"), path);
    for (const Frame &frame : sampleFrames()) putFrame(gif, frame, path);
}

int runSampleGif(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("sample-gif", args, {{"--output", "-o", true}});
    const std::string output = outputFile("sample-gif", parsed);
    if (!isStreamTarget(output) && imageFormatFor("sample-gif", output) != ImageFormat::Gif)
        throw usageError("sample-gif: writes a GIF file; name it FILE.gif");
    const std::string path = outputPath(output);
    writeOutput(path, [](const std::string &file) {
        int error = 0;
        GifFileType *gif = EGifOpenFileName(file.c_str(), false, &error);
        if (gif == nullptr) throw CliError("cannot write " + file + ": " + GifErrorString(error));
        try {
            writeSample(gif, file);
        } catch (...) {
            EGifCloseFile(gif, nullptr);
            throw;
        }
        if (EGifCloseFile(gif, &error) != GIF_OK) throw CliError("cannot write " + file + ": " + GifErrorString(error));
    });
    return 0;
}

const RegisterCommand registered{
    {"sample-gif", "write a small animated GIF to try the import commands on", kSampleGifHelp, &runSampleGif}};

}  // namespace
}  // namespace tarvex_cli
