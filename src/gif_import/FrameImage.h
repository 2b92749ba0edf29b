#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "gif_import/PackedColor.h"
#include "host/Image.h"

namespace GifImport {

using FrameImage = OstrelUtils::Image<std::uint8_t>;

// A host image for composited frames (8-bit, RGB, interleaved): 2-D when
// `slices` is 0, else a stack of that many. Returns the kernel's creation code.
int createFrameImage(std::optional<FrameImage> &image, mint slices, std::uint32_t width,
                     std::uint32_t height, int channels);

// Copies one canvas-sized picture into the slice (0 for a 2-D image), with or
// without its alpha as the image has 4 or 3 channels.
void copyPicture(const FrameImage &image, std::size_t slice, const std::vector<PackedColor> &picture);

}  // namespace GifImport
