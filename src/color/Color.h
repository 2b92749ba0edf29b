#pragma once

#include <array>
#include <cstddef>

namespace ColorUtilities {

// One pixel's samples in channel order; N is the channel count minus one.
template <typename T, int N>
struct Color {
    static constexpr int kChannels = N + 1;

    Color() = default;
    explicit Color(const T *samples) {
        for (int k = 0; k < kChannels; ++k) values[k] = samples[k];
    }
    Color(const Color &) = default;
    Color &operator=(const Color &) = default;
    virtual ~Color() = default;

    T &operator[](int k) { return values[static_cast<std::size_t>(k)]; }
    const T &operator[](int k) const { return values[static_cast<std::size_t>(k)]; }

    std::array<T, N + 1> values{};
};

}  // namespace ColorUtilities
