#include "GifBuilder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include <gif_lib.h>
#include <unistd.h>

namespace gif_test {
namespace {

int appendBytes(GifFileType *gif, const GifByteType *data, int length) {
    auto *out = static_cast<std::vector<std::uint8_t> *>(gif->UserData);
    out->insert(out->end(), data, data + length);
    return length;
}

void check(int status, const char *what) {
    if (status != GIF_OK) throw std::runtime_error(std::string("giflib failed: ") + what);
}

struct MapDeleter {
    void operator()(ColorMapObject *map) const { GifFreeMapObject(map); }
};
using Map = std::unique_ptr<ColorMapObject, MapDeleter>;

Map makeMap(const std::optional<ColorTable> &colors) {
    if (!colors) return nullptr;
    std::vector<GifColorType> entries;
    for (const Rgb &c : *colors) entries.push_back({c.r, c.g, c.b});
    Map map(GifMakeMapObject(static_cast<int>(entries.size()), entries.data()));
    if (!map) throw std::runtime_error("colour tables must be a power of two long");
    return map;
}

void putSubBlocks(GifFileType *gif, int function, const std::vector<std::string> &blocks) {
    check(EGifPutExtensionLeader(gif, function), "extension leader");
    for (const std::string &block : blocks)
        check(EGifPutExtensionBlock(gif, static_cast<int>(block.size()), block.data()), "block");
    check(EGifPutExtensionTrailer(gif), "extension trailer");
}

void putLoop(GifFileType *gif, int repetitions) {
    const std::string count{'\x01', static_cast<char>(repetitions & 0xff),
                            static_cast<char>(repetitions >> 8)};
    putSubBlocks(gif, APPLICATION_EXT_FUNC_CODE, {"NETSCAPE2.0", count});
}

void putControl(GifFileType *gif, const Control &control) {
    GraphicsControlBlock gcb{};
    gcb.DisposalMode = control.disposal;
    gcb.UserInputFlag = control.userInput;
    gcb.DelayTime = control.delay;
    gcb.TransparentColor = control.transparent;
    GifByteType bytes[4];
    const std::size_t length = EGifGCBToExtension(&gcb, bytes);
    check(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(length), bytes), "gcb");
}

void putImage(GifFileType *gif, const Image &image) {
    if (image.loopBlock) putLoop(gif, image.loopRepetitions);
    for (const auto &comment : image.comments) putSubBlocks(gif, COMMENT_EXT_FUNC_CODE, comment);
    if (image.control) putControl(gif, *image.control);
    Map local = makeMap(image.localColors);
    // The encoder replaces the previous image's copy of its local colour map
    // without freeing it; free it here so the sanitizer build stays clean.
    if (gif->Image.ColorMap != nullptr) {
        GifFreeMapObject(gif->Image.ColorMap);
        gif->Image.ColorMap = nullptr;
    }
    check(EGifPutImageDesc(gif, image.left, image.top, image.width, image.height, false,
                           local.get()),
          "image descriptor");
    std::vector<GifPixelType> row(static_cast<std::size_t>(image.width));
    for (int r = 0; r < image.height; ++r) {
        std::copy_n(image.indices.begin() + r * image.width, image.width, row.begin());
        check(EGifPutLine(gif, row.data(), image.width), "line");
    }
}

}  // namespace

GifBuilder &GifBuilder::globalColors(ColorTable colors, int background) {
    global_ = std::move(colors);
    background_ = background;
    return *this;
}

GifBuilder &GifBuilder::image(Image image) {
    if (image.indices.empty())
        image.indices.assign(static_cast<std::size_t>(image.width * image.height), 0);
    images_.push_back(std::move(image));
    return *this;
}

GifBuilder &GifBuilder::trailingComment(std::vector<std::string> subBlocks) {
    trailingComments_.push_back(std::move(subBlocks));
    return *this;
}

std::vector<std::uint8_t> GifBuilder::bytes() const {
    std::vector<std::uint8_t> out;
    int error = 0;
    GifFileType *gif = EGifOpen(&out, appendBytes, &error);
    if (gif == nullptr) throw std::runtime_error("EGifOpen failed");
    EGifSetGifVersion(gif, true);
    try {
        Map global = makeMap(global_);
        check(EGifPutScreenDesc(gif, width_, height_, 8, background_, global.get()), "screen");
        for (const Image &image : images_) putImage(gif, image);
        for (const auto &comment : trailingComments_)
            putSubBlocks(gif, COMMENT_EXT_FUNC_CODE, comment);
    } catch (...) {
        EGifCloseFile(gif, nullptr);
        throw;
    }
    check(EGifCloseFile(gif, &error), "close");
    return out;
}

std::string GifBuilder::write(const std::string &name) const { return writeFile(name, bytes()); }

Image solid(int left, int top, int width, int height, std::uint8_t index) {
    Image image;
    image.left = left;
    image.top = top;
    image.width = width;
    image.height = height;
    image.indices.assign(static_cast<std::size_t>(width * height), index);
    return image;
}

std::string scratchPath(const std::string &name) {
    struct ScratchDirectory {
        std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("tarvex-import-" + std::to_string(::getpid()));
        ScratchDirectory() { std::filesystem::create_directories(path); }
        ~ScratchDirectory() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const ScratchDirectory directory;
    return (directory.path / name).string();
}

std::string writeFile(const std::string &name, const std::vector<std::uint8_t> &bytes) {
    const std::string path = scratchPath(name);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path);
    return path;
}

}  // namespace gif_test
