#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace gif_test {

struct Rgb {
    std::uint8_t r, g, b;
};
using ColorTable = std::vector<Rgb>;  // a power of two long, 2 to 256

struct Control {
    int delay = 0;  // hundredths of a second
    int disposal = 0;
    int transparent = -1;
    bool userInput = false;
};

struct Image {
    int left = 0, top = 0, width = 1, height = 1;
    std::vector<std::uint8_t> indices;  // width * height, row-major
    std::optional<ColorTable> localColors;
    std::optional<Control> control;
    std::vector<std::vector<std::string>> comments;  // each a list of sub-blocks
    bool loopBlock = false;                          // a NETSCAPE2.0 block before it
    int loopRepetitions = 0;
};

// A well-formed GIF89a written with giflib's encoder.
class GifBuilder {
public:
    GifBuilder(int width, int height) : width_(width), height_(height) {}

    GifBuilder &globalColors(ColorTable colors, int background = 0);
    GifBuilder &image(Image image);
    GifBuilder &trailingComment(std::vector<std::string> subBlocks);

    std::vector<std::uint8_t> bytes() const;
    // Writes the file into the test's scratch directory; returns its path.
    std::string write(const std::string &name) const;

private:
    int width_, height_;
    std::optional<ColorTable> global_;
    int background_ = 0;
    std::vector<Image> images_;
    std::vector<std::vector<std::string>> trailingComments_;
};

// Shorthand for a frame filled with one index.
Image solid(int left, int top, int width, int height, std::uint8_t index);

// The scratch directory of the test binary, created on first use.
std::string scratchPath(const std::string &name);
std::string writeFile(const std::string &name, const std::vector<std::uint8_t> &bytes);

}  // namespace gif_test
