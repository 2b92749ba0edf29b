#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "color/Palette.h"

namespace ColorUtilities {

// Exact nearest-colour search for integer samples, answering what the
// exhaustive search answers, tie rules included, while looking at few
// colours. Colours are kept sorted by channel sum and visited outward from
// the target's sum, nearest sum first. Since (sum difference)^2 is at most
// (N+1) times the squared distance, once the nearest unvisited sum is too far
// every remaining colour is strictly farther than the best one: colours at
// the best distance are always visited, so ties are decided as the
// exhaustive search decides them.
template <typename T, int N>
class ChannelSumSearch {
public:
    explicit ChannelSumSearch(const Palette<T, N> &palette) {
        entries_.reserve(palette.size());
        for (std::uint32_t i = 0; i < palette.size(); ++i)
            entries_.push_back(entryOf(palette.colors[i], i));
        std::sort(entries_.begin(), entries_.end(), [](const Entry &a, const Entry &b) {
            return a.sum != b.sum ? a.sum < b.sum : a.index < b.index;
        });
        for (const Entry &e : entries_) sums_.push_back(e.sum);
    }

    // An empty palette answers 0, like the exhaustive search.
    std::uint32_t find(const Color<T, N> &target) const {
        if (entries_.empty()) return 0;
        const Entry wanted = entryOf(target, 0);
        const auto size = static_cast<std::int64_t>(entries_.size());
        std::int64_t up = std::lower_bound(sums_.begin(), sums_.end(), wanted.sum) - sums_.begin();
        std::int64_t down = up - 1;
        Best best;
        while (up < size || down >= 0) {
            const std::int64_t upGap = up < size ? sums_[up] - wanted.sum : kFar;
            const std::int64_t downGap = down >= 0 ? wanted.sum - sums_[down] : kFar;
            const bool goUp = upGap <= downGap;
            const std::int64_t gap = goUp ? upGap : downGap;
            if (best.found() && gap * gap > (N + 1) * best.distance) break;
            consider(entries_[goUp ? up++ : down--], wanted, best);
        }
        return best.index;
    }

private:
    static constexpr std::int64_t kFar = std::numeric_limits<std::int32_t>::max();

    struct Entry {
        std::int64_t sum;
        std::array<std::int32_t, N + 1> samples;
        std::uint32_t index;
    };

    struct Best {
        std::int64_t distance = -1;
        std::array<std::int32_t, N + 1> differences{};
        std::uint32_t index = 0;
        bool found() const { return distance >= 0; }
    };

    static Entry entryOf(const Color<T, N> &color, std::uint32_t index) {
        Entry e{0, {}, index};
        for (int k = 0; k <= N; ++k) {
            e.samples[k] = color[k];
            e.sum += color[k];
        }
        return e;
    }

    // The exhaustive search's order: distance, then the channel differences
    // from the first, then the index.
    static bool better(std::int64_t distance, const std::array<std::int32_t, N + 1> &differences,
                       std::uint32_t index, const Best &best) {
        if (!best.found() || distance != best.distance)
            return !best.found() || distance < best.distance;
        if (differences != best.differences) return differences < best.differences;
        return index < best.index;
    }

    static void consider(const Entry &candidate, const Entry &wanted, Best &best) {
        std::int64_t distance = 0;
        std::array<std::int32_t, N + 1> differences;
        for (int k = 0; k <= N; ++k) {
            const std::int32_t d = candidate.samples[k] - wanted.samples[k];
            differences[k] = d < 0 ? -d : d;
            distance += std::int64_t{d} * d;
        }
        if (better(distance, differences, candidate.index, best))
            best = {distance, differences, candidate.index};
    }

    std::vector<Entry> entries_;
    std::vector<std::int64_t> sums_;
};

}  // namespace ColorUtilities
