#include "gif_import/FrameImage.h"

#include <algorithm>
#include <cstring>

namespace GifImport {

FrameImage::~FrameImage() {
    if (image_ != nullptr) functions_->free(image_);
}

int FrameImage::create(mint slices, std::uint32_t width, std::uint32_t height, int channels) {
    if (functions_ == nullptr) return QUORBEL_FUNCTION_ERROR;
    channels_ = channels;
    MImage created = nullptr;
    const int code =
        slices == 0
            ? functions_->new2D(width, height, channels, MImage_Type_Bit8, MImage_CS_RGB,
                                QUORBEL_TRUE, &created)
            : functions_->new3D(slices, width, height, channels, MImage_Type_Bit8, MImage_CS_RGB,
                                QUORBEL_TRUE, &created);
    if (code == 0) image_ = created;
    return code;
}

void FrameImage::setSlice(std::size_t slice, const std::vector<PackedColor> &picture) {
    auto *target = static_cast<std::uint8_t *>(functions_->getRawData(image_)) +
                   slice * picture.size() * static_cast<std::size_t>(channels_);
    if (channels_ == 4) {
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

void FrameImage::passToResult(MArgument result) {
    MArgument_setMImage(result, image_);
    image_ = nullptr;
}

}  // namespace GifImport
