#include "GifBuilder.h"

#include <stdexcept>
#include <utility>

#include <gif_lib.h>

namespace gif_test {
namespace {

int append(GifFileType *gif, const GifByteType *data, int length) {
    auto *out = static_cast<std::vector<std::uint8_t> *>(gif->UserData);
    out->insert(out->end(), data, data + length);
    return length;
}

void check(int status, const char *what) {
    if (status != GIF_OK) throw std::runtime_error(std::string("giflib failed: ") + what);
}

// Empty for no map; the encoder copies what it is given.
std::unique_ptr<ColorMapObject, void (*)(ColorMapObject *)> colorMap(const ColorTable &colors) {
    std::vector<GifColorType> entries;
    for (const Rgb &c : colors) entries.push_back({c.r, c.g, c.b});
    ColorMapObject *map = colors.empty() ? nullptr : GifMakeMapObject(int(entries.size()), entries.data());
    if (!colors.empty() && map == nullptr) throw std::runtime_error("colour tables must be a power of two long");
    return {map, GifFreeMapObject};
}

void putSubBlocks(GifFileType *gif, int function, const std::vector<std::string> &blocks) {
    check(EGifPutExtensionLeader(gif, function), "extension leader");
    for (const std::string &block : blocks)
        check(EGifPutExtensionBlock(gif, int(block.size()), block.data()), "extension block");
    check(EGifPutExtensionTrailer(gif), "extension trailer");
}

void closeGif(GifFileType *gif) { EGifCloseFile(gif, nullptr); }

}  // namespace

GifBuilder::GifBuilder(int width, int height, const ColorTable &global, int background)
    : gif_(EGifOpen(&out_, append, nullptr), closeGif) {
    if (!gif_) throw std::runtime_error("giflib failed: open");
    EGifSetGifVersion(gif_.get(), true);
    check(EGifPutScreenDesc(gif_.get(), width, height, 8, background, colorMap(global).get()), "screen");
}

GifBuilder &GifBuilder::control(int disposal, int transparent, int delay, bool userInput) {
    const GraphicsControlBlock gcb{disposal, userInput, delay, transparent};
    GifByteType bytes[4];
    const int length = int(EGifGCBToExtension(&gcb, bytes));
    check(EGifPutExtension(gif_.get(), GRAPHICS_EXT_FUNC_CODE, length, bytes), "control");
    return *this;
}

GifBuilder &GifBuilder::comment(const std::vector<std::string> &subBlocks) {
    putSubBlocks(gif_.get(), COMMENT_EXT_FUNC_CODE, subBlocks);
    return *this;
}

GifBuilder &GifBuilder::loop(int repetitions, const std::string &identifier) {
    const std::string count{'\x01', char(repetitions & 0xff), char(repetitions >> 8)};
    putSubBlocks(gif_.get(), APPLICATION_EXT_FUNC_CODE, {identifier, count});
    return *this;
}

GifBuilder &GifBuilder::image(int left, int top, int width, int height, std::vector<std::uint8_t> indices,
                              const ColorTable &local, bool interlaced) {
    // giflib 5.2.1 drops the previous image's copy of its local map without
    // freeing it; free it here so the sanitizer build stays clean.
    GifFreeMapObject(gif_->Image.ColorMap);
    gif_->Image.ColorMap = nullptr;
    check(EGifPutImageDesc(gif_.get(), left, top, width, height, interlaced, colorMap(local).get()), "image");
    // The encoder takes the rows in the order they are stored: pass by pass.
    static const std::vector<std::pair<int, int>> passes{{0, 8}, {4, 8}, {2, 4}, {1, 2}}, plain{{0, 1}};
    for (auto [first, step] : interlaced ? passes : plain)
        for (int r = first; r < height; r += step)
            check(EGifPutLine(gif_.get(), indices.data() + r * width, width), "line");
    return *this;
}

GifBuilder &GifBuilder::solid(int left, int top, int width, int height, std::uint8_t index) {
    return image(left, top, width, height, std::vector<std::uint8_t>(std::size_t(width * height), index));
}

std::string GifBuilder::write(const std::string &name) {
    check(EGifCloseFile(gif_.release(), nullptr), "close");
    return writeFile(name, out_);
}

}  // namespace gif_test
