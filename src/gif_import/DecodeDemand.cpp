#include "gif_import/DecodeDemand.h"

#include <algorithm>
#include <array>

#include "gif_import/PackedColor.h"

namespace GifImport {
namespace {

constexpr int kImageSeparator = 0x2C, kExtensionIntroducer = 0x21;
constexpr std::size_t kHeaderBytes = 6, kScreenDescriptorBytes = 7, kImageDescriptorBytes = 9;
constexpr std::uint8_t kColorTableFlag = 0x80;

class BlockReader {
public:
    // With `taken`, every byte read is kept there too, until more than
    // `limit` are kept.
    BlockReader(std::FILE *file, std::vector<std::uint8_t> *taken, std::uint64_t limit)
        : file_(file), taken_(taken), limit_(limit) {}

    bool read(std::uint8_t *bytes, std::size_t count) {
        if (full()) return false;
        const std::size_t got = std::fread(bytes, 1, count, file_);
        if (taken_ != nullptr) taken_->insert(taken_->end(), bytes, bytes + got);
        return got == count;
    }
    int byte() {
        if (full()) return EOF;
        const int value = std::fgetc(file_);
        if (taken_ != nullptr && value != EOF) taken_->push_back(static_cast<std::uint8_t>(value));
        return value;
    }

    bool skip(std::size_t count) {
        std::array<std::uint8_t, 256> scratch;
        while (count > 0) {
            const std::size_t step = std::min(count, scratch.size());
            if (!read(scratch.data(), step)) return false;
            count -= step;
        }
        return true;
    }

    // A colour table follows a descriptor whose flags byte says so.
    bool skipColorTable(std::uint8_t flags) {
        return (flags & kColorTableFlag) == 0 || skip(std::size_t{3} << ((flags & 7) + 1));
    }

    // Data sub-blocks, each led by its length, up to the empty one.
    bool skipSubBlocks() {
        for (int length = byte(); length != EOF; length = byte())
            if (length == 0 || !skip(static_cast<std::size_t>(length))) return length == 0;
        return false;
    }

private:
    bool full() const { return taken_ != nullptr && taken_->size() > limit_; }

    std::FILE *file_;
    std::vector<std::uint8_t> *taken_;
    std::uint64_t limit_;
};

std::uint32_t word(const std::uint8_t *bytes) { return bytes[0] | (std::uint32_t{bytes[1]} << 8); }

// Reads one image descriptor and skips the image's data; false at the end of
// what can be read.
bool measureImage(BlockReader &reader, DecodeDemand &demand) {
    std::array<std::uint8_t, kImageDescriptorBytes> descriptor;
    if (!reader.read(descriptor.data(), descriptor.size())) return false;
    const std::uint32_t width = word(&descriptor[4]), height = word(&descriptor[6]);
    demand.rasterBytes += std::uint64_t{width} * height;
    // Offsets do not enlarge the canvas; sizes do.
    demand.canvasWidth = std::max(demand.canvasWidth, width);
    demand.canvasHeight = std::max(demand.canvasHeight, height);
    return reader.skipColorTable(descriptor[8]) && reader.byte() != EOF && reader.skipSubBlocks();
}

void measureBlocks(BlockReader &reader, DecodeDemand &demand) {
    std::array<std::uint8_t, kHeaderBytes + kScreenDescriptorBytes> header;
    if (!reader.read(header.data(), header.size())) return;
    demand.canvasWidth = word(&header[6]);
    demand.canvasHeight = word(&header[8]);
    if (!reader.skipColorTable(header[10])) return;
    for (;;) {
        const int introducer = reader.byte();
        if (introducer == kImageSeparator) {
            if (!measureImage(reader, demand)) return;
        } else if (introducer == kExtensionIntroducer) {
            if (reader.byte() == EOF || !reader.skipSubBlocks()) return;
        } else {
            return;  // the trailer, the end of the stream, or a byte giflib rejects
        }
    }
}

}  // namespace

std::uint64_t DecodeDemand::canvasBytes() const {
    return std::uint64_t{canvasWidth} * canvasHeight * sizeof(PackedColor);
}

DecodeDemand measureDecodeDemand(std::FILE *file, std::vector<std::uint8_t> &taken,
                                 std::uint64_t keepLimit) {
    taken.clear();
    // Where the stream cannot seek, what was read is gone from it.
    const bool rewindable = std::fseek(file, 0, SEEK_CUR) == 0;
    DecodeDemand demand;
    BlockReader reader(file, rewindable ? nullptr : &taken, keepLimit);
    measureBlocks(reader, demand);
    if (rewindable) std::rewind(file);
    demand.keptBytes = taken.size();
    return demand;
}

}  // namespace GifImport
