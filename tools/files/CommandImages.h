#pragma once

#include <optional>
#include <string>

#include "RawSampleFile.h"
#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// Where a colour command reads or writes an image: a PNG, JPEG (read only)
// or GIF (written only) file, or with a layout a raw sample file, which is
// how the real-valued sample types travel.
struct ImageLocation {
    std::string path;
    std::optional<RawImageLayout> layout;
};

// The --layout option of a command; a usage error names the command.
std::optional<RawImageLayout> layoutOption(const std::string &command, const std::optional<std::string> &text);

// A new host image; the caller frees it.
MImage readCommandImage(const ImageLocation &location);

// Refuses an output name the tool cannot write, before any work is done.
void checkOutputName(const std::string &command, const ImageLocation &location);

// Writes by the file's extension, or a raw sample file whose layout is
// printed on standard output.
void writeCommandImage(MImage image, const ImageLocation &location);

// The colour exports refuse images flagged as having alpha. Such an image
// comes back as a new one without the flag, its alpha an ordinary last
// channel (quantized and counted like the others); otherwise null.
MImage withAlphaAsChannel(MImage image);

}  // namespace tarvex_cli
