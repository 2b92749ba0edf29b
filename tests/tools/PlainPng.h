// PNG files read and written with zlib alone, as a second opinion on the
// tool's own PNG code: samples exactly as the file holds them, 16-bit ones
// big-endian.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tools_test {

struct PlainPng {
    std::uint32_t width = 0, height = 0;
    std::uint8_t bitDepth = 8;   // 8 or 16
    std::uint8_t colorType = 0;  // 0 grey, 2 RGB, 4 grey + alpha, 6 RGB + alpha
    std::vector<std::uint8_t> samples;  // rows without filter bytes, in file byte order
};

// Any non-interlaced PNG of 8- or 16-bit samples, whatever filters its rows use.
// Throws std::runtime_error on anything else.
PlainPng readPlainPng(const std::string &path);

// Rows unfiltered, one IDAT chunk.
void writePlainPng(const PlainPng &png, const std::string &path);

}  // namespace tools_test
