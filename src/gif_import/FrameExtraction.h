#pragma once

#include <gif_lib.h>

namespace GifImport {

class Decoder;

// Turns every usable saved image of `gif` into a Frame of the decoder, in
// file order, taking its raster over from giflib. Returns the number kept, or
// -1 without a giflib handle.
int extractFrames(Decoder &decoder, GifFileType *gif, int imageCount);

}  // namespace GifImport
