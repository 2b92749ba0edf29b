#include "gif_import/FrameImage.h"

#include <algorithm>
#include <cstring>

namespace GifImport {

int createFrameImage(std::optional<FrameImage> &image, mint slices, std::uint32_t width,
                     std::uint32_t height, int channels) {
    return FrameImage::create(image, slices, width, height, channels, MImage_CS_RGB, true);
}

void copyPicture(const FrameImage &image, std::size_t slice, const std::vector<PackedColor> &picture) {
    const auto channels = static_cast<std::size_t>(image.dimensions().back());
    std::uint8_t *target = image.data() + slice * picture.size() * channels;
    if (channels == 4) {
        // Packed colours are already RGBA in memory.
        std::memcpy(target, picture.data(), picture.size() * sizeof(PackedColor));
        return;
    }
    // Four bytes stored per pixel and the pointer moved by three: the spare
    // alpha byte is overwritten by the next pixel's red. The last pixel must
    // not spill past the slice.
    if (picture.empty()) return;
    const std::size_t last = picture.size() - 1;
    for (std::size_t i = 0; i < last; ++i, target += 3) std::memcpy(target, &picture[i], 4);
    const ColorBytes bytes = colorBytes(picture[last]);
    std::copy_n(bytes.begin(), 3, target);
}

}  // namespace GifImport
