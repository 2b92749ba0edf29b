#pragma once

#include <memory>

#include "RawGif.h"

struct GifFileType;

namespace gif_test {

// A well-formed GIF89a made by giflib's encoder, each call writing its blocks
// at once. Not movable: the encoder writes into out_ by its address.
class GifBuilder {
public:
    GifBuilder(int width, int height, const ColorTable &global = {}, int background = 0);
    GifBuilder(GifBuilder &&) = delete;

    // A graphic control block for the next image; delay in hundredths.
    GifBuilder &control(int disposal, int transparent = -1, int delay = 0, bool userInput = false);
    GifBuilder &comment(const std::vector<std::string> &subBlocks);
    GifBuilder &loop(int repetitions, const std::string &identifier = "NETSCAPE2.0");
    // `indices` row-major in image order, whether interlaced or not.
    GifBuilder &image(int left, int top, int width, int height, std::vector<std::uint8_t> indices,
                      const ColorTable &local = {}, bool interlaced = false);
    GifBuilder &solid(int left, int top, int width, int height, std::uint8_t index);

    // Ends the file and writes it into the scratch directory; returns the path.
    std::string write(const std::string &name);

private:
    std::vector<std::uint8_t> out_;
    std::unique_ptr<GifFileType, void (*)(GifFileType *)> gif_;  // after out_, so closed before it goes
};

}  // namespace gif_test
