#include "RawGif.h"

#include <algorithm>
#include <bit>

namespace gif_test {
namespace {

int tableSizeBits(std::size_t entries) { return std::bit_width(entries) - 2; }

// LZW with a clear code before the table would outgrow 9-bit codes, so every
// pixel is a literal and the code width never changes.
std::vector<std::uint8_t> literalLzw(const std::vector<std::uint8_t> &indices) {
    constexpr int clear = 256, end = 257, width = 9, literalsPerClear = 250;
    std::vector<std::uint8_t> out;
    std::uint32_t buffer = 0;
    int bits = 0;
    auto emit = [&](int code) {
        buffer |= static_cast<std::uint32_t>(code) << bits;
        for (bits += width; bits >= 8; bits -= 8, buffer >>= 8) out.push_back(buffer & 0xff);
    };
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i % literalsPerClear == 0) emit(clear);
        emit(indices[i]);
    }
    emit(end);
    if (bits > 0) out.push_back(buffer & 0xff);
    return out;
}

}  // namespace

RawGif::RawGif(int width, int height, const ColorTable &global, int background) {
    const std::string header = "GIF89a";
    out_.assign(header.begin(), header.end());
    word(width);
    word(height);
    out_.push_back(global.empty() ? 0x70 : 0xf0 | tableSizeBits(global.size()));
    out_.push_back(static_cast<std::uint8_t>(background));
    out_.push_back(0);
    colorTable(global);
}

RawGif &RawGif::control(int disposal, int delay, int transparent) {
    out_.insert(out_.end(), {0x21, 0xf9, 4});
    out_.push_back(static_cast<std::uint8_t>((disposal & 7) << 2 | (transparent >= 0 ? 1 : 0)));
    word(delay);
    out_.push_back(static_cast<std::uint8_t>(transparent >= 0 ? transparent : 0));
    out_.push_back(0);
    return *this;
}

RawGif &RawGif::comment(const std::vector<std::string> &blocks) {
    out_.insert(out_.end(), {0x21, 0xfe});
    for (const std::string &block : blocks) {
        out_.push_back(static_cast<std::uint8_t>(block.size()));
        out_.insert(out_.end(), block.begin(), block.end());
    }
    out_.push_back(0);
    return *this;
}

RawGif &RawGif::application(const std::string &identifier, const std::vector<std::string> &blocks) {
    std::vector<std::string> all{identifier};
    all.insert(all.end(), blocks.begin(), blocks.end());
    out_.insert(out_.end(), {0x21, 0xff});
    for (const std::string &block : all) {
        out_.push_back(static_cast<std::uint8_t>(block.size()));
        out_.insert(out_.end(), block.begin(), block.end());
    }
    out_.push_back(0);
    return *this;
}

RawGif &RawGif::image(int left, int top, int width, int height,
                      const std::vector<std::uint8_t> &indices, const ColorTable &local) {
    out_.push_back(0x2c);
    word(left);
    word(top);
    word(width);
    word(height);
    out_.push_back(local.empty() ? 0 : static_cast<std::uint8_t>(0x80 | tableSizeBits(local.size())));
    colorTable(local);
    out_.push_back(8);
    subBlocks(literalLzw(indices));
    return *this;
}

RawGif &RawGif::imageWithData(int left, int top, int width, int height,
                              std::uint8_t minimumCodeSize, const std::vector<std::uint8_t> &data) {
    out_.push_back(0x2c);
    word(left);
    word(top);
    word(width);
    word(height);
    out_.push_back(0);
    out_.push_back(minimumCodeSize);
    subBlocks(data);
    return *this;
}

RawGif &RawGif::trailer() {
    out_.push_back(0x3b);
    return *this;
}

std::vector<std::uint8_t> RawGif::bytes(std::size_t length) const {
    return {out_.begin(), out_.begin() + static_cast<std::ptrdiff_t>(std::min(length, out_.size()))};
}

std::string RawGif::write(const std::string &name, std::size_t length) const {
    return writeFile(name, bytes(length));
}

void RawGif::word(int value) {
    out_.push_back(static_cast<std::uint8_t>(value & 0xff));
    out_.push_back(static_cast<std::uint8_t>((value >> 8) & 0xff));
}

void RawGif::colorTable(const ColorTable &colors) {
    for (const Rgb &c : colors) out_.insert(out_.end(), {c.r, c.g, c.b});
}

void RawGif::subBlocks(const std::vector<std::uint8_t> &data) {
    for (std::size_t at = 0; at < data.size(); at += 255) {
        const std::size_t length = std::min<std::size_t>(255, data.size() - at);
        out_.push_back(static_cast<std::uint8_t>(length));
        out_.insert(out_.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                    data.begin() + static_cast<std::ptrdiff_t>(at + length));
    }
    out_.push_back(0);
}

}  // namespace gif_test
