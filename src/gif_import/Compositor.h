#pragma once

#include <cstdint>
#include <vector>

#include "gif_import/Frame.h"
#include "gif_import/PackedColor.h"

namespace GifImport {

// The palette a frame is drawn with: its own, or else the file's global one
// with the frame's transparent entry made transparent.
Palette drawingPalette(const Frame &frame, const Palette &globalPalette);

// Draws the frame's raster onto `picture` (a full canvas, row-major). A
// transparent colour never erases a visible pixel but is stamped, with its
// alpha of 0, onto pixels that are still transparent.
void drawFrame(const Frame &frame, const Palette &palette, std::vector<PackedColor> &picture,
               std::uint32_t canvasWidth);

// Prepares the canvas for the next frame according to the frame's disposal,
// and rewrites a disposal the format does not define (0, 4..7) to 0.
void applyDisposal(Frame &frame, std::vector<PackedColor> &canvas, PackedColor background,
                   std::uint32_t canvasWidth);

}  // namespace GifImport
