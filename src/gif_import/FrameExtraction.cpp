#include "gif_import/FrameExtraction.h"

#include <memory>
#include <utility>

#include "gif_import/Decoder.h"
#include "gif_import/ExtensionScan.h"
#include "gif_import/Palette.h"

namespace GifImport {
namespace {

// The one rule for which images are usable: inside the canvas and not empty.
// Compositing relies on it, so it never draws outside the canvas.
bool fitsCanvas(const Frame &frame, const Decoder &decoder) {
    return frame.top + frame.height <= decoder.canvasHeight &&
           frame.left + frame.width <= decoder.canvasWidth && frame.width != 0 &&
           frame.height != 0 && frame.width <= decoder.canvasWidth &&
           frame.height <= decoder.canvasHeight;
}

Disposal disposalOf(int mode) {
    switch (mode) {
    case Keep: return Keep;
    case RestoreBackground: return RestoreBackground;
    case RestorePrevious: return RestorePrevious;
    default: return Unspecified;  // drawn like Keep
    }
}

std::unique_ptr<Frame> frameFor(const GifImageDesc &image) {
    return std::make_unique<Frame>(static_cast<std::uint32_t>(image.Height),
                                   static_cast<std::uint32_t>(image.Width),
                                   static_cast<std::uint32_t>(image.Top),
                                   static_cast<std::uint32_t>(image.Left));
}

void applyGraphicsControl(Frame &frame, const GraphicsControlBlock &gcb,
                          const Palette &globalPalette) {
    frame.delayMilliseconds = static_cast<std::uint32_t>(gcb.DelayTime) * 10;
    frame.disposal = disposalOf(gcb.DisposalMode);
    frame.userInputFlag = gcb.UserInputFlag ? 1 : 0;
    const int transparent = gcb.TransparentColor;
    if (transparent < 0) return;
    const auto index = static_cast<std::size_t>(transparent);
    if (index < frame.localPalette.size()) {
        frame.localPalette[index] = withAlpha(frame.localPalette[index], 0);
        frame.transparentIndex = transparent;
    } else if (index < globalPalette.size()) {
        // The global palette is shared by all frames and stays as it is; the
        // drawing palette marks the entry for this frame only.
        frame.transparentIndex = transparent;
    }
}

}  // namespace

int extractFrames(Decoder &decoder, GifFileType *gif, int imageCount) {
    if (gif == nullptr) return -1;
    int kept = 0;
    for (int i = 0; i < imageCount; ++i) {
        SavedImage &saved = gif->SavedImages[i];
        std::unique_ptr<Frame> frame = frameFor(saved.ImageDesc);
        if (!fitsCanvas(*frame, decoder)) continue;
        if (saved.ImageDesc.ColorMap != nullptr)
            frame->localPalette = paletteFromColorMap(*saved.ImageDesc.ColorMap);
        else if (gif->SColorMap == nullptr)
            continue;

        GraphicsControlBlock gcb;
        if (DGifSavedExtensionToGCB(gif, i, &gcb) == GIF_OK)
            applyGraphicsControl(*frame, gcb, decoder.globalPalette);
        scanExtensions(saved.ExtensionBlocks, saved.ExtensionBlockCount, decoder.loopCount,
                       frame->comments);
        // Taken over, not copied: giflib frees only the rasters left to it.
        frame->raster = Raster(std::exchange(saved.RasterBits, nullptr),
                               std::size_t{frame->width} * frame->height);
        decoder.frames.push_back(std::move(frame));
        ++kept;
    }
    return kept;
}

}  // namespace GifImport
