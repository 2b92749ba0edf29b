// Debian's sample photographs (python3-skimage), read when installed.
#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include <spng.h>

namespace tarvex_test {

struct Photograph {
    std::size_t width = 0, height = 0;
    std::vector<unsigned char> rgb;  // empty when the file is missing or unreadable
};

inline const std::filesystem::path kSamplePhotographs = "/usr/lib/python3/dist-packages/skimage/data";
inline constexpr const char *kSamplePhotographNames[] = {"astronaut.png", "coffee.png", "chelsea.png"};

inline Photograph samplePhotograph(const char *name) {
    Photograph photo;
    const std::filesystem::path path = kSamplePhotographs / name;
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) return photo;
    std::unique_ptr<spng_ctx, void (*)(spng_ctx *)> png(spng_ctx_new(0), spng_ctx_free);
    spng_ihdr header{};
    std::size_t size = 0;
    if (spng_set_png_file(png.get(), file.get()) != 0 || spng_get_ihdr(png.get(), &header) != 0 ||
        spng_decoded_image_size(png.get(), SPNG_FMT_RGB8, &size) != 0)
        return photo;
    photo.rgb.resize(size);
    if (spng_decode_image(png.get(), photo.rgb.data(), size, SPNG_FMT_RGB8, 0) != 0) {
        photo.rgb.clear();
        return photo;
    }
    photo.width = header.width;
    photo.height = header.height;
    return photo;
}

}  // namespace tarvex_test
