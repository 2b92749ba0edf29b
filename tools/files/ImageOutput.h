#pragma once

#include <string>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

enum class ImageFormat { Png, Gif };

// ".png" for "a/B.PNG": the extension in lower case, with its dot.
std::string lowerCaseExtension(const std::string &path);

// The format an output asks for: "gif:OUT" or "png:OUT" outright, else its
// extension, .png or .gif (any letter case); a stream such as "-" is PNG.
// Throws a usage error naming the command for any other name, before
// anything is computed.
ImageFormat imageFormatFor(const std::string &command, const std::string &output);

// The file an output names: OUT for "gif:OUT" or "png:OUT".
std::string outputPath(const std::string &output);

// Writes an image in the format its output asks for: PNG (8 or 16 bits, the
// first slice) or GIF through WriteColormaps (8-bit grey or RGB of at most
// 256 colours, one frame a slice).
void writeImage(MImage image, const std::string &output);

}  // namespace tarvex_cli
