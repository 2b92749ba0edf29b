#include "gif_import/FrameExtraction.h"

#include <memory>

#include "gif_import/Compositor.h"
#include "gif_import/Decoder.h"
#include "gif_import/ExtensionScan.h"
#include "gif_import/Palette.h"

namespace GifImport {
namespace {

bool fitsCanvas(const Frame &frame, const Decoder &decoder) {
    return frame.top + frame.height <= decoder.canvasHeight &&
           frame.left + frame.width <= decoder.canvasWidth && frame.width != 0 &&
           frame.height != 0 && frame.width <= decoder.canvasWidth &&
           frame.height <= decoder.canvasHeight;
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
    frame.disposal = static_cast<std::uint32_t>(gcb.DisposalMode);
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

void composite(Frame &frame, Decoder &decoder) {
    frame.picture = decoder.canvas;
    drawFrame(frame, drawingPalette(frame, decoder.globalPalette), frame.picture,
              decoder.canvasWidth);
    applyDisposal(frame, decoder.canvas, decoder.backgroundColor, decoder.canvasWidth);
}

}  // namespace

int extractFrames(Decoder &decoder, GifFileType *gif, int imageCount) {
    if (gif == nullptr || decoder.canvas.size() != decoder.canvasPixelCount) return -1;
    int kept = 0;
    for (int i = 0; i < imageCount; ++i) {
        const SavedImage &saved = gif->SavedImages[i];
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
        frame->raster.assign(saved.RasterBits,
                             saved.RasterBits + std::size_t{frame->width} * frame->height);

        composite(*frame, decoder);
        decoder.frames.push_back(std::move(frame));
        ++kept;
    }
    return kept;
}

}  // namespace GifImport
