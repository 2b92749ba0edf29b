#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include "color/MedianCut.h"
#include "color/Octree.h"
#include "color/Wu.h"

namespace Quant {

enum class Method : std::uint8_t { MedianCut = 1, Wu = 2, Octree = 3 };

// Cells per channel of a method, as a power of two: the request when it lies
// in 2..8, else 6. A 1-bit sample has two values, so the request means
// nothing there: one bit, or two for the octree.
template <typename T>
std::uint8_t quantizerBits(std::int64_t requested, Method method) {
    if constexpr (std::is_same_v<T, signed char>) return method == Method::Octree ? 2 : 1;
    return requested >= 2 && requested <= 8 ? static_cast<std::uint8_t>(requested) : 6;
}

// The method by number; only the low 8 bits of the number count.
template <typename T, int N>
std::unique_ptr<Quantizer<T, N>> makeQuantizer(std::int64_t methodNumber, std::uint32_t pixelCount,
                                               const T *pixels, std::uint32_t maxColors,
                                               std::int64_t bits) {
    const auto method = static_cast<Method>(static_cast<std::uint8_t>(methodNumber));
    switch (method) {
        case Method::MedianCut:
            return std::make_unique<MedianCut<T, N>>(pixelCount, pixels, maxColors,
                                                     quantizerBits<T>(bits, method));
        case Method::Wu:
            return std::make_unique<Wu<T, N>>(pixelCount, pixels, maxColors, quantizerBits<T>(bits, method));
        case Method::Octree:
            return std::make_unique<Octree<T, N>>(pixelCount, pixels, maxColors,
                                                  quantizerBits<T>(bits, method));
    }
    throw std::runtime_error("Invalid quantization method");
}

}  // namespace Quant
