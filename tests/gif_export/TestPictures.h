// Deterministic pictures for the export tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace export_test {

// Pseudo-random bytes below `bound`.
inline std::vector<std::uint8_t> randomBytes(std::size_t count, std::uint64_t seed, int bound = 256) {
    std::vector<std::uint8_t> bytes(count);
    std::uint64_t state = seed;
    for (std::uint8_t &b : bytes) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        b = static_cast<std::uint8_t>((state >> 33) % static_cast<std::uint64_t>(bound));
    }
    return bytes;
}

// Gradients that drift from slice to slice with a little noise: many colours
// with smooth regions, like a photograph. RGB, slice after slice.
inline std::vector<std::uint8_t> photoLike(int width, int height, int slices, std::uint64_t seed) {
    const std::vector<std::uint8_t> noise = randomBytes(std::size_t(width) * height * 3 * slices, seed, 24);
    std::vector<std::uint8_t> samples(noise.size());
    std::size_t i = 0;
    for (int s = 0; s < slices; ++s)
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x, i += 3) {
                samples[i] = static_cast<std::uint8_t>((x * 200 / width + 9 * s) % 232 + noise[i]);
                samples[i + 1] = static_cast<std::uint8_t>(y * 230 / height + noise[i + 1]);
                samples[i + 2] =
                    static_cast<std::uint8_t>((x + y) * 115 / (width + height) + 60 + noise[i + 2]);
            }
    return samples;
}

}  // namespace export_test
