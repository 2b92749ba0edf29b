#include "RawGif.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <stdexcept>

namespace gif_test {
namespace {

// LZW with a clear code before the table would outgrow 9-bit codes, so every
// pixel is a literal and the code width never changes.
std::string literalLzw(const std::vector<std::uint8_t> &indices) {
    constexpr int clear = 256, end = 257, width = 9, literalsPerClear = 250;
    std::string out;
    std::uint32_t buffer = 0;
    int bits = 0;
    auto emit = [&](int code) {
        buffer |= static_cast<std::uint32_t>(code) << bits;
        for (bits += width; bits >= 8; bits -= 8, buffer >>= 8) out.push_back(static_cast<char>(buffer));
    };
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i % literalsPerClear == 0) emit(clear);
        emit(indices[i]);
    }
    emit(end);
    if (bits > 0) out.push_back(static_cast<char>(buffer));
    return out;
}

std::vector<std::string> chunks(const std::string &data) {
    std::vector<std::string> out;
    for (std::size_t at = 0; at < data.size(); at += 255) out.push_back(data.substr(at, 255));
    return out;
}

}  // namespace

RawGif::RawGif(int width, int height, const ColorTable &global, int background) {
    out_ = {'G', 'I', 'F', '8', '9', 'a'};
    word(width);
    word(height);
    const int flags = global.empty() ? 0x70 : 0xf0 | (std::bit_width(global.size()) - 2);
    out_.insert(out_.end(), {static_cast<std::uint8_t>(flags), static_cast<std::uint8_t>(background), 0});
    for (const Rgb &c : global) out_.insert(out_.end(), {c.r, c.g, c.b});
}

RawGif &RawGif::application(const std::string &identifier, const std::vector<std::string> &subBlocks) {
    out_.insert(out_.end(), {0x21, 0xff});
    std::vector<std::string> all{identifier};
    all.insert(all.end(), subBlocks.begin(), subBlocks.end());
    blocks(all);
    return *this;
}

RawGif &RawGif::image(int left, int top, int width, int height, const std::vector<std::uint8_t> &indices) {
    descriptor(left, top, width, height);
    out_.push_back(8);
    blocks(chunks(literalLzw(indices)));
    return *this;
}

RawGif &RawGif::solid(int left, int top, int width, int height, std::uint8_t index) {
    return image(left, top, width, height, std::vector<std::uint8_t>(std::size_t(width * height), index));
}

RawGif &RawGif::imageWithData(int left, int top, int width, int height,
                              std::uint8_t minimumCodeSize, const std::vector<std::uint8_t> &data) {
    descriptor(left, top, width, height);
    out_.push_back(minimumCodeSize);
    blocks(chunks(std::string(data.begin(), data.end())));
    return *this;
}

std::vector<std::uint8_t> RawGif::bytes(std::size_t length) const {
    std::vector<std::uint8_t> all = out_;
    all.push_back(0x3b);
    all.resize(std::min(length, all.size()));
    return all;
}

std::string RawGif::write(const std::string &name, std::size_t length) const {
    return writeFile(name, bytes(length));
}

void RawGif::word(int value) {
    out_.push_back(static_cast<std::uint8_t>(value));
    out_.push_back(static_cast<std::uint8_t>(value >> 8));
}

void RawGif::descriptor(int left, int top, int width, int height) {
    out_.push_back(0x2c);
    for (int value : {left, top, width, height}) word(value);
    out_.push_back(0);  // no local map, not interlaced
}

void RawGif::blocks(const std::vector<std::string> &subBlocks) {
    for (const std::string &block : subBlocks) {
        out_.push_back(static_cast<std::uint8_t>(block.size()));
        out_.insert(out_.end(), block.begin(), block.end());
    }
    out_.push_back(0);
}

std::string writeFile(const std::string &name, const std::vector<std::uint8_t> &bytes) {
    const std::string path = scratchPath(name);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) throw std::runtime_error("cannot write " + path);
    return path;
}

}  // namespace gif_test
