#pragma once

#include <string>

#include "ImageFiles.h"
#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// Reads a JPEG file into a new interleaved 8-bit host image: grey for
// greyscale files, RGB for every other colour space. The caller frees the
// image. Throws CliError with a clear message on any failure.
MImage readJpeg(const std::string &path);

// What readJpeg would give, from the file's header alone.
PictureShape readJpegShape(const std::string &path);

}  // namespace tarvex_cli
