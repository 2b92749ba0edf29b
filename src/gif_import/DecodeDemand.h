#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

namespace GifImport {

// The memory a file's decode will take, read from its image descriptors
// before giflib allocates anything: giflib's rasters (one byte per pixel of
// every image, usable or not) and the canvas that its frames are composited on.
struct DecodeDemand {
    std::uint64_t rasterBytes = 0;
    // The bytes of a stream that cannot be rewound, kept to be read again.
    std::uint64_t keptBytes = 0;
    std::uint32_t canvasWidth = 0;
    std::uint32_t canvasHeight = 0;

    std::uint64_t canvasBytes() const;
    std::uint64_t totalBytes() const { return rasterBytes + keptBytes + canvasBytes(); }
};

// Walks the blocks of the GIF stream from its start without decoding any
// image data, then rewinds the stream. A damaged stream is measured as far
// as it can be read; giflib then judges it. A stream that cannot be rewound
// (a pipe) leaves every byte it gave in `taken`, to be read again from there;
// once they pass `keepLimit` the walk stops, as such a stream may never end.
DecodeDemand measureDecodeDemand(std::FILE *file, std::vector<std::uint8_t> &taken,
                                 std::uint64_t keepLimit);

}  // namespace GifImport
