// A deterministic, photo-like RGB picture: smooth gradients, shaded shapes
// and a little grain, on which dithering shows its character. A library of
// its own, so that benchmarks and tests draw the same picture as
// `tarvex sample-image` without reaching into the tool's sources.
#pragma once

#include <cstdint>
#include <vector>

namespace tarvex_sample {

// Interleaved 8-bit RGB, rows top to bottom, the same for the same size on
// every run.
std::vector<std::uint8_t> samplePicture(std::uint32_t width, std::uint32_t height);

}  // namespace tarvex_sample
