#pragma once

#include <string>

#include "gif_import/Decoder.h"

namespace GifImport {

// Decodes the file behind a decoder from get-or-load: CannotOpen for a null
// decoder, Undecodable (with the entry dropped from the cache) for a file
// that does not decode, Success otherwise.
int ensureDecoded(Decoder *decoder, const std::string &fileName);

// Get-or-load and ensureDecoded, then NoFrames for a file without a usable
// frame. `decoder` is the file's decoder when the code is Success.
int decodedWithFrames(const std::string &fileName, Decoder *&decoder);

}  // namespace GifImport
