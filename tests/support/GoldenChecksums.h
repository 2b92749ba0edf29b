// What the golden tests share: FNV-1a checksums of samples, and the short
// element-type names their keys are made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace tarvex_test {

inline std::uint64_t fnv1a(const void *data, std::size_t size) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    const auto *bytes = static_cast<const unsigned char *>(data);
    for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001b3ULL;
    return hash;
}

template <typename T>
std::uint64_t checksumOf(const std::vector<T> &values) {
    return fnv1a(values.data(), values.size() * sizeof(T));
}

template <typename T>
std::string typeName() {
    if constexpr (std::is_same_v<T, signed char>) return "bit";
    if constexpr (std::is_same_v<T, unsigned char>) return "byte";
    if constexpr (std::is_same_v<T, unsigned short>) return "bit16";
    if constexpr (std::is_same_v<T, float>) return "real32";
    return "real64";
}

}  // namespace tarvex_test
