#pragma once

#include <gif_lib.h>

namespace GifImport {

class Decoder;

// Turns every usable saved image of `gif` into a composited Frame of the
// decoder, in file order. Returns the number kept, or -1 when the decoder's
// canvas is not ready.
int extractFrames(Decoder &decoder, GifFileType *gif, int imageCount);

}  // namespace GifImport
