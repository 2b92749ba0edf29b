#include "gif_import/Decoder.h"

#include <algorithm>
#include <stdexcept>

#include <unistd.h>

#include <gif_lib.h>

#include "gif_import/ExtensionScan.h"
#include "gif_import/FrameExtraction.h"
#include "gif_import/Palette.h"

namespace GifImport {
namespace {

// A few bytes of file can declare a 65535 x 65535 screen, and every kept
// frame holds a full-canvas picture. A file whose pictures would need more
// than half of the machine's memory reads as undecodable instead of taking
// the process down.
std::uint64_t compositingBudget() {
    static const std::uint64_t budget = [] {
        const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
        if (pages <= 0 || pageSize <= 0) return std::uint64_t{4} << 30;
        return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) / 2;
    }();
    return budget;
}

// Counts the canvas and the images that can be kept: those inside the canvas.
bool compositingFits(const GifFileType &gif, std::uint32_t width, std::uint32_t height) {
    std::uint64_t pictures = 1;
    for (int i = 0; i < gif.ImageCount; ++i) {
        const GifImageDesc &d = gif.SavedImages[i].ImageDesc;
        const auto fits = [](int offset, int size, std::uint32_t limit) {
            return size > 0 && offset >= 0 && std::uint64_t(offset) + std::uint64_t(size) <= limit;
        };
        if (fits(d.Left, d.Width, width) && fits(d.Top, d.Height, height)) ++pictures;
    }
    return std::uint64_t{width} * height * sizeof(PackedColor) * pictures <= compositingBudget();
}

int readFromStream(GifFileType *gif, GifByteType *buffer, int length) {
    auto *file = static_cast<std::FILE *>(gif->UserData);
    return static_cast<int>(std::fread(buffer, 1, static_cast<std::size_t>(length), file));
}

struct GifCloser {
    void operator()(GifFileType *gif) const { DGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, GifCloser>;

GifHandle openGif(std::FILE *file) {
    int error = D_GIF_SUCCEEDED;
    GifHandle gif(DGifOpen(file, readFromStream, &error));
    if (error != D_GIF_SUCCEEDED) gif.reset();
    return gif;
}

}  // namespace

void Decoder::ensureLoaded() {
    if (!loaded && !load()) error = true;
}

bool Decoder::load() {
    if (!file) return false;
    GifHandle gif = openGif(file.get());
    if (!gif) return false;
    try {
        decodeInto(gif.get());
    } catch (...) {
        // Covers the decoder's own failures as well as bad_alloc and an
        // out-of-range canvas position while compositing.
        reset();
        return false;
    }
    loaded = true;
    return true;
}

void Decoder::decodeInto(GifFileType *gif) {
    if (DGifSlurp(gif) != GIF_OK) throw std::runtime_error("Loading data failed");

    canvasWidth = static_cast<std::uint32_t>(gif->SWidth);
    canvasHeight = static_cast<std::uint32_t>(gif->SHeight);
    frameCount = static_cast<std::uint32_t>(gif->ImageCount);
    // Offsets are not added: a frame pushed past the screen is dropped later
    // instead of enlarging the canvas.
    for (int i = 0; i < gif->ImageCount; ++i) {
        const GifImageDesc &image = gif->SavedImages[i].ImageDesc;
        canvasHeight = std::max(canvasHeight, static_cast<std::uint32_t>(image.Height));
        canvasWidth = std::max(canvasWidth, static_cast<std::uint32_t>(image.Width));
    }
    if (canvasWidth == 0 || canvasHeight == 0) throw std::runtime_error("Loading data failed");

    scanExtensions(gif->ExtensionBlocks, gif->ExtensionBlockCount, loopCount, fileComments);
    canvasPixelCount = canvasWidth * canvasHeight;
    if (!compositingFits(*gif, canvasWidth, canvasHeight))
        throw std::runtime_error("Loading data failed");

    if (gif->SColorMap != nullptr) {
        globalPalette = paletteFromColorMap(*gif->SColorMap);
        backgroundIndex = gif->SBackGroundColor;
        if (backgroundIndex >= 0 && static_cast<std::size_t>(backgroundIndex) < globalPalette.size())
            backgroundColor = withAlpha(globalPalette[backgroundIndex], 0);
        else
            backgroundIndex = -1;
    }
    canvas.assign(canvasPixelCount, backgroundColor);

    const int kept = extractFrames(*this, gif, gif->ImageCount);
    if (kept < 0) throw std::runtime_error("Frames extraction failed");
    if (static_cast<std::uint32_t>(kept) < frameCount) frameCount = static_cast<std::uint32_t>(kept);
}

void Decoder::reset() {
    canvas.clear();
    globalPalette.clear();
    frames.clear();
}

}  // namespace GifImport
