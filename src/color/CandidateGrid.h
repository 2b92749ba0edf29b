#pragma once

#include <algorithm>
#include <cstdlib>
#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "color/Palette.h"

namespace ColorUtilities {

// Exact nearest-colour search for integer samples, answering what the
// exhaustive search answers, tie rules included. The colour space is cut into
// a grid of boxes; each box keeps the colours that can be nearest to some
// point inside it: those whose distance to the box is at most the smallest of
// the colours' farthest distances to it. Every colour at the best distance
// from a target in the box is among them. They are kept nearest to the box
// first, so that a scan can stop at the first one whose distance to the box
// exceeds the best distance found; and since the scan compares by the
// exhaustive search's whole order (distance, channel differences, index),
// the order of the scan does not change the answer. A box's list is made the
// first time a target falls in it.
template <typename T, int N>
class CandidateGrid {
public:
    explicit CandidateGrid(const Palette<T, N> &palette) : boxes_(std::size_t{1} << kKeyBits) {
        colors_.reserve(palette.size());
        for (std::uint32_t i = 0; i < palette.size(); ++i)
            colors_.push_back(candidateOf(palette.colors[i], i));
    }

    // An empty palette answers 0, like the exhaustive search.
    std::uint32_t find(const Color<T, N> &target) {
        std::array<std::int32_t, N + 1> wanted;
        std::uint32_t key = 0;
        for (int k = 0; k <= N; ++k) {
            wanted[k] = target[k];
            key = key << kCellBits | offsetOf(target[k]) >> kShift;
        }
        if (colors_.empty()) return 0;
        // A built box is never empty: the colour whose farthest distance is
        // the smallest is always among its candidates.
        std::vector<Candidate> &box = boxes_[key];
        if (box.empty()) build(box, key);
        const Candidate *candidate = box.data();
        const Candidate *end = candidate + box.size();
        const Candidate *best = candidate;
        Distance bestDistance = distanceOf(*candidate, wanted);
        for (++candidate; candidate != end && candidate->boxDistance <= bestDistance; ++candidate) {
            const Distance distance = distanceOf(*candidate, wanted);
            if (distance < bestDistance ||
                (distance == bestDistance && before(*candidate, *best, wanted))) {
                best = candidate;
                bestDistance = distance;
            }
        }
        return best->index;
    }

private:
    // Cells per channel: 2^kCellBits, so that the grid has at most 2^16 boxes.
    static constexpr int kCellBits = N == 0 ? 8 : N == 1 ? 7 : N == 2 ? 5 : 4;
    static constexpr int kKeyBits = kCellBits * (N + 1);
    static constexpr int kSampleBits = 8 * sizeof(T);
    static constexpr int kShift = kSampleBits - kCellBits;
    static constexpr std::int32_t kLowest = std::numeric_limits<T>::lowest();

    // Squared distances: 8-bit ones fit in 32 bits.
    using Distance = std::conditional_t<sizeof(T) == 1, std::int32_t, std::int64_t>;

    struct Candidate {
        std::array<std::int32_t, N + 1> samples;
        std::uint32_t index;
        Distance boxDistance;  // to the box the candidate is listed for
    };

    static std::uint32_t offsetOf(T sample) {
        return static_cast<std::uint32_t>(std::int32_t{sample} - kLowest);
    }

    static Candidate candidateOf(const Color<T, N> &color, std::uint32_t index) {
        Candidate c{{}, index, 0};
        for (int k = 0; k <= N; ++k) c.samples[k] = color[k];
        return c;
    }

    static Distance distanceOf(const Candidate &c, const std::array<std::int32_t, N + 1> &target) {
        Distance sum = 0;
        for (int k = 0; k <= N; ++k) {
            const Distance d = c.samples[k] - target[k];
            sum += d * d;
        }
        return sum;
    }

    // At equal distance: closerByChannels on the samples as int, then the
    // lower index.
    static bool before(const Candidate &a, const Candidate &b,
                       const std::array<std::int32_t, N + 1> &target) {
        for (int k = 0; k <= N; ++k) {
            const std::int32_t da = std::abs(a.samples[k] - target[k]);
            const std::int32_t db = std::abs(b.samples[k] - target[k]);
            if (da != db) return da < db;
        }
        return a.index < b.index;
    }

    void build(std::vector<Candidate> &box, std::uint32_t key) {
        std::array<std::int64_t, N + 1> low, high;
        for (int k = N; k >= 0; --k, key >>= kCellBits) {
            low[k] = kLowest + (std::int64_t{key & ((1u << kCellBits) - 1)} << kShift);
            high[k] = low[k] + (std::int64_t{1} << kShift) - 1;
        }
        std::vector<Candidate> all = colors_;
        std::int64_t bound = std::numeric_limits<std::int64_t>::max();
        for (std::size_t i = 0; i < colors_.size(); ++i) {
            std::int64_t inside = 0, farthest = 0;
            for (int k = 0; k <= N; ++k) {
                const std::int64_t s = colors_[i].samples[k];
                const std::int64_t in = s < low[k] ? low[k] - s : s > high[k] ? s - high[k] : 0;
                const std::int64_t far = std::max(s - low[k], high[k] - s);
                inside += in * in;
                farthest += far * far;
            }
            all[i].boxDistance = static_cast<Distance>(inside);
            bound = std::min(bound, farthest);
        }
        for (const Candidate &c : all)
            if (c.boxDistance <= bound) box.push_back(c);
        std::stable_sort(box.begin(), box.end(), [](const Candidate &a, const Candidate &b) {
            return a.boxDistance < b.boxDistance;
        });
    }

    std::vector<Candidate> colors_;
    std::vector<std::vector<Candidate>> boxes_;
};

}  // namespace ColorUtilities
