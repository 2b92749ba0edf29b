#include "gif_import/FrameImage.h"

#include <algorithm>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#endif

namespace GifImport {

int createFrameImage(std::optional<FrameImage> &image, mint slices, std::uint32_t width,
                     std::uint32_t height, int channels) {
    return FrameImage::create(image, slices, width, height, channels, MImage_CS_RGB, true);
}

namespace {

// Four bytes stored per pixel and the pointer moved by three: the spare
// alpha byte is overwritten by the next pixel's red. The last pixel must
// not spill past the slice.
void dropAlpha(std::uint8_t *target, const PackedColor *pixels, std::size_t count) {
    if (count == 0) return;
    for (std::size_t i = 0; i + 1 < count; ++i, target += 3) std::memcpy(target, &pixels[i], 4);
    const ColorBytes bytes = colorBytes(pixels[count - 1]);
    std::copy_n(bytes.begin(), 3, target);
}

#if defined(__x86_64__) && defined(__GNUC__)
// Four pixels at a time, their twelve colour bytes gathered by one shuffle;
// each store spills four bytes that the next one overwrites, so the last
// few pixels are left to dropAlpha. Answers how many pixels it copied.
[[gnu::target("ssse3")]] std::size_t dropAlphaByFours(std::uint8_t *target, const PackedColor *pixels,
                                                      std::size_t count) {
    const __m128i colorBytes = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    std::size_t i = 0;
    for (; i + 6 <= count; i += 4, target += 12) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i *>(pixels + i));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(target), _mm_shuffle_epi8(four, colorBytes));
    }
    return i;
}
#endif

}  // namespace

void copyPicture(const FrameImage &image, std::size_t slice, const std::vector<PackedColor> &picture) {
    const auto channels = static_cast<std::size_t>(image.dimensions().back());
    std::uint8_t *target = image.data() + slice * picture.size() * channels;
    if (channels == 4) {
        // Packed colours are already RGBA in memory.
        std::memcpy(target, picture.data(), picture.size() * sizeof(PackedColor));
        return;
    }
    std::size_t copied = 0;
#if defined(__x86_64__) && defined(__GNUC__)
    static const bool shuffles = __builtin_cpu_supports("ssse3");
    if (shuffles) copied = dropAlphaByFours(target, picture.data(), picture.size());
#endif
    dropAlpha(target + copied * 3, picture.data() + copied, picture.size() - copied);
}

}  // namespace GifImport
