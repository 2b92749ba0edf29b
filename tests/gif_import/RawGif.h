#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Scratch.h"

namespace gif_test {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb &) const = default;
};
using ColorTable = std::vector<Rgb>;  // a power of two long, 2 to 256

// Writes a GIF89a byte by byte, for files no encoder would make: no colour
// map at all, indices past the palette, frames past the screen, damaged data.
class RawGif {
public:
    // Header and logical screen descriptor; `global` may be empty.
    RawGif(int width, int height, const ColorTable &global = {}, int background = 0);

    // An application block with the given sub-blocks after its identifier.
    RawGif &application(const std::string &identifier, const std::vector<std::string> &subBlocks);
    // An image whose indices (row-major, in image order) may be anything up
    // to 255: the data is coded with 8-bit literals only.
    RawGif &image(int left, int top, int width, int height, const std::vector<std::uint8_t> &indices);
    RawGif &solid(int left, int top, int width, int height, std::uint8_t index);
    // An image descriptor followed by the given raw data sub-blocks.
    RawGif &imageWithData(int left, int top, int width, int height, std::uint8_t minimumCodeSize,
                          const std::vector<std::uint8_t> &data);

    // The bytes with the trailer, cut to `length` when given.
    std::vector<std::uint8_t> bytes(std::size_t length = SIZE_MAX) const;
    // Writes into the test binary's scratch directory; returns the path.
    std::string write(const std::string &name, std::size_t length = SIZE_MAX) const;

private:
    void word(int value);
    void descriptor(int left, int top, int width, int height);
    void blocks(const std::vector<std::string> &subBlocks);
    std::vector<std::uint8_t> out_;
};

using tarvex_test::scratchPath;
std::string writeFile(const std::string &name, const std::vector<std::uint8_t> &bytes);

}  // namespace gif_test
