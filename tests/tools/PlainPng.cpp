#include "PlainPng.h"

#include <zlib.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tools_test {
namespace {

const std::uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

std::uint32_t bigEndian32(const std::uint8_t *bytes) {
    return std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 8 | bytes[3];
}

void putBigEndian32(std::vector<std::uint8_t> &out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(std::uint8_t(value >> shift));
}

std::size_t channelsOf(std::uint8_t colorType) {
    switch (colorType) {
    case 0: return 1;
    case 2: return 3;
    case 4: return 2;
    case 6: return 4;
    default: throw std::runtime_error("colour type " + std::to_string(colorType) + " is not read here");
    }
}

std::uint8_t paeth(int left, int up, int upLeft) {
    const int estimate = left + up - upLeft;
    const int toLeft = std::abs(estimate - left), toUp = std::abs(estimate - up),
              toUpLeft = std::abs(estimate - upLeft);
    if (toLeft <= toUp && toLeft <= toUpLeft) return std::uint8_t(left);
    return std::uint8_t(toUp <= toUpLeft ? up : upLeft);
}

// Undoes the filter of each row in place and drops the filter bytes.
std::vector<std::uint8_t> unfilter(const std::vector<std::uint8_t> &filtered, std::size_t rows,
                                   std::size_t rowBytes, std::size_t pixelBytes) {
    std::vector<std::uint8_t> out(rows * rowBytes);
    for (std::size_t y = 0; y < rows; ++y) {
        const std::uint8_t filter = filtered[y * (rowBytes + 1)];
        const std::uint8_t *in = &filtered[y * (rowBytes + 1) + 1];
        std::uint8_t *row = &out[y * rowBytes];
        const std::uint8_t *above = y > 0 ? row - rowBytes : nullptr;
        for (std::size_t x = 0; x < rowBytes; ++x) {
            const int left = x >= pixelBytes ? row[x - pixelBytes] : 0;
            const int up = above ? above[x] : 0;
            const int upLeft = above && x >= pixelBytes ? above[x - pixelBytes] : 0;
            int predicted = 0;
            switch (filter) {
            case 0: predicted = 0; break;
            case 1: predicted = left; break;
            case 2: predicted = up; break;
            case 3: predicted = (left + up) / 2; break;
            case 4: predicted = paeth(left, up, upLeft); break;
            default: throw std::runtime_error("filter " + std::to_string(filter) + " is not a PNG filter");
            }
            row[x] = std::uint8_t(in[x] + predicted);
        }
    }
    return out;
}

void putChunk(std::vector<std::uint8_t> &out, const char *type, const std::vector<std::uint8_t> &data) {
    putBigEndian32(out, std::uint32_t(data.size()));
    const std::size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    putBigEndian32(out, std::uint32_t(crc32(0, &out[start], uInt(out.size() - start))));
}

}  // namespace

PlainPng readPlainPng(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<std::uint8_t> file{std::istreambuf_iterator<char>(in), {}};
    if (file.size() < 8 || !std::equal(kSignature, kSignature + 8, file.begin()))
        throw std::runtime_error(path + ": no PNG signature");
    PlainPng png;
    std::vector<std::uint8_t> compressed;
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::uint32_t length = bigEndian32(&file[at]);
        const std::string type(file.begin() + long(at) + 4, file.begin() + long(at) + 8);
        const std::uint8_t *data = &file[at + 8];
        if (at + 12 + length > file.size()) throw std::runtime_error(path + ": chunk past the end");
        if (type == "IHDR") {
            png.width = bigEndian32(data);
            png.height = bigEndian32(data + 4);
            png.bitDepth = data[8];
            png.colorType = data[9];
            if (data[12] != 0) throw std::runtime_error(path + ": interlaced files are not read here");
        } else if (type == "IDAT") {
            compressed.insert(compressed.end(), data, data + length);
        }
        at += 12 + length;
    }
    if (png.bitDepth != 8 && png.bitDepth != 16) throw std::runtime_error(path + ": not 8 or 16 bits");
    const std::size_t pixelBytes = channelsOf(png.colorType) * png.bitDepth / 8;
    const std::size_t rowBytes = png.width * pixelBytes;
    std::vector<std::uint8_t> filtered(png.height * (rowBytes + 1));
    uLongf inflated = filtered.size();
    if (uncompress(filtered.data(), &inflated, compressed.data(), compressed.size()) != Z_OK ||
        inflated != filtered.size())
        throw std::runtime_error(path + ": image data does not inflate to its size");
    png.samples = unfilter(filtered, png.height, rowBytes, pixelBytes);
    return png;
}

void writePlainPng(const PlainPng &png, const std::string &path) {
    const std::size_t rowBytes = png.width * channelsOf(png.colorType) * png.bitDepth / 8;
    std::vector<std::uint8_t> rows;
    for (std::size_t y = 0; y < png.height; ++y) {
        rows.push_back(0);
        rows.insert(rows.end(), png.samples.begin() + long(y * rowBytes),
                    png.samples.begin() + long((y + 1) * rowBytes));
    }
    std::vector<std::uint8_t> compressed(compressBound(uLong(rows.size())));
    uLongf compressedSize = compressed.size();
    if (compress(compressed.data(), &compressedSize, rows.data(), uLong(rows.size())) != Z_OK)
        throw std::runtime_error("cannot compress " + path);
    compressed.resize(compressedSize);

    std::vector<std::uint8_t> header;
    putBigEndian32(header, png.width);
    putBigEndian32(header, png.height);
    header.insert(header.end(), {png.bitDepth, png.colorType, 0, 0, 0});
    std::vector<std::uint8_t> out(kSignature, kSignature + 8);
    putChunk(out, "IHDR", header);
    putChunk(out, "IDAT", compressed);
    putChunk(out, "IEND", {});
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(out.data()), long(out.size()));
}

}  // namespace tools_test
