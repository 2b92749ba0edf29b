#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <type_traits>
#include <vector>

#include "color/KeyNumbers.h"

namespace Quant {

namespace detail {

// Calls isNew(pixel) for each pixel in storage order and counts the true
// answers, stopping once more than `limit` colours are found.
template <typename T, int N, class IsNew>
std::uint64_t countNewColors(const T *pixels, std::uint64_t pixelCount, std::uint64_t limit,
                             IsNew &&isNew) {
    std::uint64_t found = 0;
    for (std::uint64_t i = 0; i < pixelCount && found <= limit; ++i)
        if (isNew(pixels + i * (N + 1))) ++found;
    return found;
}

struct PackedHash {
    std::uint64_t operator()(std::uint64_t key) const { return mix64(key); }
};

// Integer samples: the colour packed into one number, its channels side by side.
template <typename T, int N>
std::uint64_t countPackedColors(const T *pixels, std::uint64_t pixelCount, std::uint64_t limit) {
    using Unsigned = std::make_unsigned_t<T>;
    constexpr int kSampleBits = 8 * sizeof(T);
    constexpr int kKeyBits = kSampleBits * (N + 1);
    const auto pack = [](const T *pixel) {
        std::uint64_t key = 0;
        for (int k = 0; k <= N; ++k) key |= std::uint64_t{static_cast<Unsigned>(pixel[k])} << (k * kSampleBits);
        return key;
    };
    if constexpr (kKeyBits <= 24) {
        std::vector<std::uint64_t> seen(((std::uint64_t{1} << kKeyBits) + 63) / 64, 0);
        return countNewColors<T, N>(pixels, pixelCount, limit, [&](const T *pixel) {
            const std::uint64_t key = pack(pixel), bit = std::uint64_t{1} << (key % 64);
            const bool fresh = (seen[key / 64] & bit) == 0;
            seen[key / 64] |= bit;
            return fresh;
        });
    } else {
        KeyNumbers<std::uint64_t, PackedHash> seen;
        return countNewColors<T, N>(pixels, pixelCount, limit,
                                    [&](const T *pixel) { return seen.insert(pack(pixel)); });
    }
}

// Real samples by their bits, -0 read as +0, since the two compare equal.
template <typename T, int N>
using RealKey = std::array<std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>, N + 1>;

template <typename T, int N>
struct RealKeyHash {
    std::uint64_t operator()(const RealKey<T, N> &key) const {
        std::uint64_t h = 0;
        for (auto word : key) h = mix64(h ^ word);
        return h;
    }
};

template <typename T, int N>
bool hasNaN(const T *pixel) {
    for (int k = 0; k <= N; ++k)
        if (std::isnan(pixel[k])) return true;
    return false;
}

// A colour with a NaN channel equals no colour, itself included, so it is
// new every time.
template <typename T, int N>
std::uint64_t countRealColors(const T *pixels, std::uint64_t pixelCount, std::uint64_t limit) {
    KeyNumbers<RealKey<T, N>, RealKeyHash<T, N>> seen;
    return countNewColors<T, N>(pixels, pixelCount, limit, [&](const T *pixel) {
        if (hasNaN<T, N>(pixel)) return true;
        RealKey<T, N> key;
        for (int k = 0; k <= N; ++k) {
            const T value = pixel[k] == 0 ? T{0} : pixel[k];
            std::memcpy(&key[k], &value, sizeof(T));
        }
        return seen.insert(key);
    });
}

template <typename T, int N>
struct LexicographicLess {
    bool operator()(const std::array<T, N + 1> &a, const std::array<T, N + 1> &b) const {
        for (int k = 0; k <= N; ++k) {
            if (a[k] < b[k]) return true;
            if (b[k] < a[k]) return false;
        }
        return false;
    }
};

// With NaN, `<` orders nothing, and the count is whatever an ordered tree
// makes of it: only the tree itself can say.
template <typename T, int N>
std::uint64_t countInOrderedTree(const T *pixels, std::uint64_t pixelCount, std::uint64_t limit) {
    std::map<std::array<T, N + 1>, std::uint64_t, LexicographicLess<T, N>> seen;
    return countNewColors<T, N>(pixels, pixelCount, limit, [&](const T *pixel) {
        std::array<T, N + 1> color;
        for (int k = 0; k <= N; ++k) color[k] = pixel[k];
        const auto [entry, fresh] = seen.try_emplace(color, 0);
        ++entry->second;
        return fresh;
    });
}

}  // namespace detail

// The number of distinct colours among the pixels, found in storage order;
// counting stops once more than `limit` are found. Ordered compares colours
// channel by channel with `<`, hashed by `==`: the two differ only for NaN.
template <typename T, int N>
std::uint64_t countUniqueColors(const T *pixels, std::uint64_t pixelCount, std::uint64_t limit,
                                bool ordered) {
    if constexpr (std::is_integral_v<T>) {
        return detail::countPackedColors<T, N>(pixels, pixelCount, limit);
    } else {
        if (ordered)
            for (std::uint64_t i = 0; i < pixelCount; ++i)
                if (detail::hasNaN<T, N>(pixels + i * (N + 1)))
                    return detail::countInOrderedTree<T, N>(pixels, pixelCount, limit);
        return detail::countRealColors<T, N>(pixels, pixelCount, limit);
    }
}

}  // namespace Quant
