#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <gif_lib.h>

#include "gif_import/Compositor.h"
#include "gif_import/Frame.h"
#include "gif_import/PackedColor.h"

namespace GifImport {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// A GIF file opened for reading, decoded in one go on the first question
// about it. Once loaded its facts never change; it keeps the frames' rasters,
// and its compositor draws their pictures when they are asked for. The stream
// is closed once the decode has been tried.
class Decoder {
public:
    explicit Decoder(FileHandle file) : file(std::move(file)) {}
    virtual ~Decoder() = default;
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;

    // Decodes on the first call. A failed decode sets the error flag and is
    // tried again on the next call (the stream is then closed, so it fails).
    void ensureLoaded();

    bool hasError() const { return error; }
    bool hasGlobalPalette() const { return !globalPalette.empty(); }
    // The memory the decoder holds between calls.
    std::uint64_t heldBytes() const;

    std::int32_t backgroundIndex = -1;
    std::int32_t loopCount = -1;
    PackedColor backgroundColor = 0;
    FileHandle file;
    bool loaded = false;
    bool error = false;
    std::uint32_t canvasWidth = 0;
    std::uint32_t canvasHeight = 0;
    std::uint32_t canvasPixelCount = 0;
    std::uint32_t frameCount = 0;
    // The largest rectangle that a restore-previous frame covers.
    std::uint64_t restorePreviousPixels = 0;
    std::vector<std::string> fileComments;
    std::vector<std::unique_ptr<Frame>> frames;
    Palette globalPalette;
    FrameCompositor compositor;

private:
    bool load();
    void decodeInto(GifFileType *gif);
    void reset();
};

}  // namespace GifImport
