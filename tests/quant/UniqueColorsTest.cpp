// Colour counting against the plain maps it stands for: an ordered map by
// channel-wise `<`, and a hash map with FNV-1a channel hashes combined in
// channel order and equality by `==`. Both must agree with the fast count on
// every input, limits, NaN and signed zeros included.
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

#include "ForEachInstantiation.h"
#include "color/UniqueColors.h"

namespace {

template <typename T, int N>
using Key = std::array<T, N + 1>;

template <typename T, int N>
struct ChannelLess {
    bool operator()(const Key<T, N> &a, const Key<T, N> &b) const {
        for (int k = 0; k <= N; ++k) {
            if (a[k] < b[k]) return true;
            if (b[k] < a[k]) return false;
        }
        return false;
    }
};

template <typename T, int N>
struct FnvHash {
    std::size_t operator()(const Key<T, N> &key) const {
        std::uint64_t seed = 0;
        for (int k = 0; k <= N; ++k) {
            T value = key[k];
            if constexpr (std::is_floating_point_v<T>)
                if (value == 0) value = T{0};
            unsigned char bytes[sizeof(T)];
            std::memcpy(bytes, &value, sizeof(T));
            std::uint64_t h = 0xcbf29ce484222325ULL;
            for (unsigned char b : bytes) h = (h ^ b) * 0x100000001b3ULL;
            seed ^= h + 0x9e3779b9 + (seed << 6) + (seed >> 2);
        }
        return seed;
    }
};

template <typename T, int N>
struct ChannelEqual {
    bool operator()(const Key<T, N> &a, const Key<T, N> &b) const {
        for (int k = 0; k <= N; ++k)
            if (!(a[k] == b[k])) return false;
        return true;
    }
};

template <typename T, int N, class Map>
std::uint64_t plainCount(Map &map, const std::vector<T> &samples, std::uint64_t limit) {
    for (std::size_t i = 0; i + N < samples.size(); i += N + 1) {
        if (map.size() > limit) break;
        Key<T, N> key;
        for (int k = 0; k <= N; ++k) key[k] = samples[i + k];
        map.try_emplace(key, 0).first->second += 1;
    }
    return map.size();
}

template <typename T, int N>
std::uint64_t plainCount(const std::vector<T> &samples, std::uint64_t limit, bool ordered) {
    if (ordered) {
        std::map<Key<T, N>, std::uint64_t, ChannelLess<T, N>> map;
        return plainCount<T, N>(map, samples, limit);
    }
    std::unordered_map<Key<T, N>, std::uint64_t, FnvHash<T, N>, ChannelEqual<T, N>> map(8);
    map.max_load_factor(1.0);
    return plainCount<T, N>(map, samples, limit);
}

// Few distinct values per channel, so that colours repeat; real samples
// include signed zeros, and NaN where asked.
template <typename T>
std::vector<T> samplesFrom(std::mt19937_64 &random, std::size_t count, int levels, bool withNaN) {
    std::vector<T> samples(count);
    for (T &sample : samples) {
        const int level = static_cast<int>(random() % levels);
        if constexpr (std::is_floating_point_v<T>) {
            sample = static_cast<T>(level - levels / 2) / 4;
            if (level == 0) sample = -T{0};
            if (withNaN && random() % 50 == 0) sample = std::numeric_limits<T>::quiet_NaN();
        } else if constexpr (std::is_same_v<T, signed char>) {
            sample = static_cast<T>(level % 2);
        } else {
            sample = static_cast<T>(level * 997 + (level % 3) * (sizeof(T) > 1 ? 40000 : 0));
        }
    }
    return samples;
}

TEST(UniqueColors, FastCountMatchesThePlainMapsWithAndWithoutLimits) {
    std::mt19937_64 random(42);
    tarvex_test::forEachInstantiation([&]<typename T, int N>() {
        for (int trial = 0; trial < 30; ++trial) {
            const std::size_t pixels = 1 + random() % 400;
            const int levels = 1 + static_cast<int>(random() % 12);
            const bool withNaN = trial % 3 == 0;
            const auto samples = samplesFrom<T>(random, pixels * (N + 1), levels, withNaN);
            for (std::uint64_t limit : {std::uint64_t{0}, std::uint64_t{3}, std::uint64_t{17},
                                        std::uint64_t(std::numeric_limits<std::int64_t>::max())})
                for (bool ordered : {false, true}) {
                    SCOPED_TRACE(::testing::Message() << typeid(T).name() << " channels " << N + 1
                                                      << " trial " << trial << " limit " << limit
                                                      << " ordered " << ordered);
                    EXPECT_EQ((Quant::countUniqueColors<T, N>(samples.data(), pixels, limit, ordered)),
                              (plainCount<T, N>(samples, limit, ordered)));
                }
        }
    });
}

}  // namespace
