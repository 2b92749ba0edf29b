#pragma once

#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "color/ColorDistance.h"
#include "color/IntensityIndex.h"
#include "color/NumericConversions.h"
#include "color/PairDistanceTable.h"

namespace ColorUtilities {

namespace detail {

// The largest per-channel difference of real samples that the sorted search
// squares; four such squares still fit in 64 bits. Differences are squared
// exactly, also those past 255.
inline constexpr std::uint64_t kLargestRealDifference = (std::uint64_t{1} << 31) - 1;

// |a - b| as the sorted search measures it: exact for the integer types,
// truncated to an unsigned integer for the real ones.
template <typename T>
std::uint64_t searchDifference(T a, T b) {
    if constexpr (std::is_integral_v<T>)
        return static_cast<std::uint64_t>(std::abs(a - b));
    else
        return toUnsignedSaturated(static_cast<double>(std::abs(a - b)), kLargestRealDifference);
}

template <typename T, int N>
double channelSum(const Color<T, N> &color) {
    double sum = 0.0;
    for (int k = 0; k <= N; ++k) sum += static_cast<double>(color[k]);
    return sum;
}

template <typename T, int N>
class SortedWalk {
public:
    SortedWalk(const Palette<T, N> &palette, const PairDistanceTable &pairs,
               const Color<T, N> &target, std::uint32_t start)
        : colors_(palette.colors),
          pairs_(pairs),
          target_(target),
          targetSum_(channelSum(target)),
          best_(start),
          bestDistance_(toUnsignedSaturated(colorDistance(target, palette.at(start)))) {}

    std::uint32_t run() {
        const std::int64_t size = static_cast<std::int64_t>(colors_.size());
        std::int64_t up = best_ + std::int64_t{1}, down = best_ - std::int64_t{1};
        bool upOpen = up < size, downOpen = down >= 0;
        while (upOpen || downOpen) {
            if (upOpen) upOpen = visit(static_cast<std::uint32_t>(up)) && ++up < size;
            if (downOpen) downOpen = visit(static_cast<std::uint32_t>(down)) && --down >= 0;
        }
        return best_;
    }

private:
    // False when the cursor must stop: by Cauchy-Schwarz the squared
    // difference of channel sums bounds (channels x distance). The factor is 3
    // whatever the channel count, so four channels may stop too early.
    bool visit(std::uint32_t j) {
        const Color<T, N> &candidate = colors_[j];
        const double gap = channelSum(candidate) - targetSum_;
        const double limit = static_cast<double>(bestDistance_);
        if (gap * gap > 3.0 * limit) return false;
        if (!(2.0 * limit >= pairs_(best_, j))) return true;
        std::uint64_t distance = 0;
        for (int k = 0; k <= N; ++k) {
            const std::uint64_t difference = searchDifference(target_[k], candidate[k]);
            distance += difference * difference;
            if (distance > bestDistance_) return true;
        }
        if (distance < bestDistance_) {
            best_ = j;
            bestDistance_ = distance;
        } else if (closerByChannels(candidate, colors_[best_], target_)) {
            best_ = j;
        }
        return true;
    }

    const std::vector<Color<T, N>> &colors_;
    const PairDistanceTable &pairs_;
    const Color<T, N> &target_;
    double targetSum_;
    std::uint32_t best_;
    std::uint64_t bestDistance_;
};

}  // namespace detail

// Search through an intensity-sorted palette: start at the colour of nearest
// mean intensity and walk outward in both directions, pruning by intensity
// and by the distances between palette colours. Not always the nearest colour
// with four channels.
template <typename T, int N>
std::uint32_t sortedNearestIndex(const Palette<T, N> &palette, const IntensityIndex &index,
                                 const PairDistanceTable &pairs, const Color<T, N> &target) {
    const std::uint32_t start = index.startFor(meanIntensity(target));
    return detail::SortedWalk<T, N>(palette, pairs, target, start).run();
}

}  // namespace ColorUtilities
