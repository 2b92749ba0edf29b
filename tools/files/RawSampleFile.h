#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// A raw sample file holds an image's samples and nothing else, in the host's
// own order (interleaved: slices x rows x columns x channels; planar: slices x
// channels x rows x columns), native byte order, 1-bit images one byte per
// sample. Its layout travels beside it as text:
//   type=real32,width=W,height=H,channels=C[,slices=S][,planar][,alpha][,cs=rgb]
struct RawImageLayout {
    MImage_Data_Type type = MImage_Type_Bit8;
    mint width = 0;
    mint height = 0;
    mint channels = 1;
    mint slices = 0;  // 0: a 2-D image
    bool planar = false;
    bool alpha = false;
    MImage_CS_Type colorSpace = MImage_CS_Automatic;
};

// Throws std::invalid_argument for unknown keys, missing or bad values.
RawImageLayout parseRawImageLayout(std::string_view text);
std::string formatRawImageLayout(const RawImageLayout &layout);

// Throws std::invalid_argument when the size does not fit in memory.
std::size_t rawImageByteCount(const RawImageLayout &layout);

// Makes a new host image from the file; the caller frees it. A file whose
// size does not match the layout is a usage error.
MImage readRawImage(const std::string &path, const RawImageLayout &layout);

RawImageLayout layoutOf(MImage image);
void writeRawImage(MImage image, const std::string &path);

}  // namespace tarvex_cli
