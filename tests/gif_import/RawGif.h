#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "GifBuilder.h"

namespace gif_test {

// Writes GIF blocks byte by byte, so that files the encoder refuses to make
// (no colour map at all, indices past the palette, damaged data) can be built.
class RawGif {
public:
    // Header and logical screen descriptor; `global` may be empty.
    RawGif(int width, int height, const ColorTable &global = {}, int background = 0);

    RawGif &control(int disposal, int delay, int transparent);
    RawGif &comment(const std::vector<std::string> &subBlocks);
    // An application block with the given sub-blocks after its identifier.
    RawGif &application(const std::string &identifier, const std::vector<std::string> &subBlocks);
    // An image whose indices may be anything up to 255: the data is coded
    // with 8-bit literals only.
    RawGif &image(int left, int top, int width, int height, const std::vector<std::uint8_t> &indices,
                  const ColorTable &local = {});
    // An image descriptor followed by the given raw data sub-blocks.
    RawGif &imageWithData(int left, int top, int width, int height, std::uint8_t minimumCodeSize,
                          const std::vector<std::uint8_t> &data);
    RawGif &trailer();

    // The bytes so far, cut to `length` when given.
    std::vector<std::uint8_t> bytes(std::size_t length = SIZE_MAX) const;
    std::string write(const std::string &name, std::size_t length = SIZE_MAX) const;

private:
    void word(int value);
    void colorTable(const ColorTable &colors);
    void subBlocks(const std::vector<std::uint8_t> &data);
    std::vector<std::uint8_t> out_;
};

}  // namespace gif_test
