#pragma once

#include <string>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// The size and samples of the image that a reader would make.
struct PictureShape {
    mint width = 0, height = 0;
    mint channels = 0;  // alpha included
    int bits = 8;       // 8 or 16
    bool alpha = false;
};

// Reads a PNG file into a new interleaved host image: 8-bit samples, or 16-bit
// when the file has 16-bit samples; grey, grey + alpha, RGB or RGB + alpha
// (palette files are expanded to RGB or RGBA). The caller frees the image.
// Throws CliError with a clear message on any failure.
MImage readPng(const std::string &path);

// Reads a PNG or a JPEG file, told apart by their first bytes, as readPng and
// readJpeg do.
MImage readImageFile(const std::string &path);

// What readImageFile would give, learnt from the file's header without
// decoding its pixels.
PictureShape readImageShape(const std::string &path);

// Writes one slice (0-based; 0 for a 2-D image) of an interleaved 8-bit or
// 16-bit host image of 1 to 4 channels as a PNG file.
void writePng(MImage image, mint slice, const std::string &path);

}  // namespace tarvex_cli
