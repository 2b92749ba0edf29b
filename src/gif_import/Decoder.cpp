#include "gif_import/Decoder.h"

#include <algorithm>
#include <stdexcept>

#include <gif_lib.h>

#include "gif_import/DecodeBudget.h"
#include "gif_import/DecodeDemand.h"
#include "gif_import/ExtensionScan.h"
#include "gif_import/FrameExtraction.h"
#include "gif_import/Palette.h"

namespace GifImport {
namespace {

// The stream, after the bytes that measuring took from it when it could not
// be rewound.
struct GifSource {
    std::FILE *file;
    std::vector<std::uint8_t> taken;
    std::size_t given = 0;
};

int readFromSource(GifFileType *gif, GifByteType *buffer, int length) {
    auto *source = static_cast<GifSource *>(gif->UserData);
    const auto wanted = static_cast<std::size_t>(length);
    const std::size_t again = std::min(wanted, source->taken.size() - source->given);
    std::copy_n(source->taken.begin() + static_cast<std::ptrdiff_t>(source->given), again, buffer);
    source->given += again;
    return static_cast<int>(again + std::fread(buffer + again, 1, wanted - again, source->file));
}

struct GifCloser {
    void operator()(GifFileType *gif) const { DGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, GifCloser>;

GifHandle openGif(GifSource &source) {
    int error = D_GIF_SUCCEEDED;
    GifHandle gif(DGifOpen(&source, readFromSource, &error));
    if (error != D_GIF_SUCCEEDED) gif.reset();
    return gif;
}

// A few bytes of file can declare a 65535 x 65535 screen or thousands of
// large images, and a pipe may never end. A file whose rasters and canvas,
// and the bytes kept of a pipe, would not fit beside the files already cached
// reads as undecodable instead of taking the process down.
bool demandFits(GifSource &source) {
    return fitsDecodeBudget(measureDecodeDemand(source.file, source.taken, decodeBudget()).totalBytes());
}

}  // namespace

void Decoder::ensureLoaded() {
    if (!loaded && !load()) error = true;
}

std::uint64_t Decoder::heldBytes() const {
    std::uint64_t bytes = compositor.heldBytes() + globalPalette.size() * sizeof(PackedColor);
    for (const auto &frame : frames)
        bytes += frame->raster.size() + frame->localPalette.size() * sizeof(PackedColor);
    return bytes;
}

bool Decoder::load() {
    if (!file) return false;
    // Whatever the outcome, the stream is not read again.
    const FileHandle stream = std::move(file);
    GifSource source{stream.get(), {}};
    if (!demandFits(source)) return false;
    GifHandle gif = openGif(source);
    if (!gif) return false;
    try {
        decodeInto(gif.get());
    } catch (...) {
        // Covers the decoder's own failures as well as bad_alloc.
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

    if (gif->SColorMap != nullptr) {
        globalPalette = paletteFromColorMap(*gif->SColorMap);
        backgroundIndex = gif->SBackGroundColor;
        if (backgroundIndex >= 0 && static_cast<std::size_t>(backgroundIndex) < globalPalette.size())
            backgroundColor = withAlpha(globalPalette[backgroundIndex], 0);
        else
            backgroundIndex = -1;
    }

    const int kept = extractFrames(*this, gif, gif->ImageCount);
    if (kept < 0) throw std::runtime_error("Frames extraction failed");
    if (static_cast<std::uint32_t>(kept) < frameCount) frameCount = static_cast<std::uint32_t>(kept);
    for (const auto &frame : frames)
        if (frame->disposal == RestorePrevious)
            restorePreviousPixels = std::max(restorePreviousPixels, std::uint64_t{frame->width} * frame->height);
}

void Decoder::reset() {
    compositor = FrameCompositor();
    globalPalette.clear();
    frames.clear();
}

}  // namespace GifImport
