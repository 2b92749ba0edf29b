#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "gif_import/Frame.h"
#include "gif_import/PackedColor.h"

namespace GifImport {

class Decoder;

// The palette a frame is drawn with: its own, or else the file's global one
// with the frame's transparent entry made transparent.
Palette drawingPalette(const Frame &frame, const Palette &globalPalette);

// Draws the frame's raster onto `canvas` (canvasWidth wide, row-major; the
// frame lies inside it). A transparent colour never erases a visible pixel
// but is stamped, with its alpha of 0, onto pixels that are still transparent.
void drawFrame(const Frame &frame, const Palette &palette, PackedColor *canvas,
               std::uint32_t canvasWidth);

// Composites a decoder's frames on demand, in the order a viewer shows them.
// It keeps one canvas with the last frame asked for drawn on it and that
// frame's disposal still to come, so reading the frames in order costs one
// drawing per frame. Once an earlier frame has been asked for, the replay
// keeps snapshots a few canvases of drawing apart, so that reading in any
// order costs a bounded amount of drawing per frame instead of a replay from
// the first; the snapshots together hold about as much as the rasters.
class FrameCompositor {
public:
    // The full-canvas picture of frame `index` of the decoder, valid until the
    // next call.
    const std::vector<PackedColor> &picture(const Decoder &decoder, std::size_t index);

    // Gives the canvas back. Nothing follows the last frame, so after it the
    // canvas would only serve asking for that frame again, and a cached file
    // would hold a whole screen for it.
    void release();

    // Frees the snapshots; false when there were none. Later replays may
    // take new ones.
    bool dropSnapshots();

    // Memory the compositor holds between calls.
    std::size_t heldBytes() const;
    // Whether the next picture needs a canvas (and the restore buffer) to be
    // allocated.
    bool hasCanvas() const { return !canvas_.empty(); }

private:
    struct Snapshot {
        std::size_t drawnCount;
        std::vector<PackedColor> canvas;
        std::vector<PackedColor> saved;
    };

    void resumeBefore(const Decoder &decoder, std::size_t index);
    void restart(const Decoder &decoder);
    void holdRestoreRoom(const Decoder &decoder);
    void drawNext(const Decoder &decoder);
    void disposeDrawn(const Decoder &decoder);
    void noteDrawing(const Decoder &decoder);

    std::vector<PackedColor> canvas_;
    // What a restore-previous frame covered before it was drawn.
    std::vector<PackedColor> saved_;
    std::size_t drawnCount_ = 0;  // frames drawn since the start; the last one is on show
    bool consistent_ = false;     // false until a restart, and after an interrupted drawing
    bool replaying_ = false;      // an earlier frame has been asked for
    std::uint64_t drawnSinceSnapshot_ = 0;  // pixels
    std::vector<Snapshot> snapshots_;       // by rising drawnCount
};

}  // namespace GifImport
