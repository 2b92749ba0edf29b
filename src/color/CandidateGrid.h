#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <limits>
#include <type_traits>
#include <vector>

#include "color/BoxAnswerMemo.h"
#include "color/FirstOfEachColor.h"
#include "color/PackedCandidates.h"
#include "color/Palette.h"
#include "color/ZeroedArray.h"

namespace ColorUtilities {

// Exact nearest-colour search for integer samples, answering what the
// exhaustive search answers, tie rules included.
//
// The colour space is cut into boxes, halving every channel from level to
// level (an octree in three channels). Each box keeps the palette colours
// that can be the answer for some point inside it, nearest to the box first:
// - a colour farther from the box than some other colour's farthest point
//   of it can never be nearest there;
// - a colour strictly farther than the box's reference colour at every point
//   of the box never wins there either (the difference of two squared
//   distances is affine, so checking the corners suffices).
// Whatever can win in a box can win in its parent, so a box's list is made
// from its parent's: the cost is the length of the parent list, not the
// palette's size. Lists are made the first time a target falls in a box; the
// finest boxes of a photograph mostly keep one colour, which is then the
// answer without a distance computed.
//
// The scan of a list compares by the exhaustive search's whole order
// (distance, channel differences, index), so the order of the scan does not
// change the answer, and it stops at the first colour whose distance to the
// box exceeds the best distance found.
template <typename T, int N>
class CandidateGrid {
public:
    // Past entryLimit listed colours (256 MB by default) every list is dropped
    // and made again on demand, which bounds the memory of large palettes on
    // varied images. Remembering answers pays where colours repeat and
    // costs where they do not: its blocks crowd the processor's cache.
    explicit CandidateGrid(const Palette<T, N> &palette, bool rememberAnswers = true,
                           std::size_t entryLimit = (std::size_t{256} << 20) / sizeof(Candidate),
                           bool wideVectors = PackedCandidates::wideVectors())
        : entryLimit_(entryLimit), packed_(wideVectors) {
        colors_.reserve(palette.size());
        for (std::uint32_t i = 0; i < palette.size(); ++i)
            colors_.push_back(candidateOf(palette.colors[i], i));
        // Lists are made from each colour's first index alone: repeats would
        // lengthen every list they are in.
        for (const std::uint32_t i : firstOfEachColor(palette).kept) distinctColors_.push_back(colors_[i]);
        for (int level = 0; level <= kTableLevel; ++level)
            levels_[level] = ZeroedArray<Span>(std::size_t{1} << (level * (N + 1)));
        remembering_ = kRemembers && rememberAnswers && palette.size() <= Memo::kColors;
        packing_ = kPackable && palette.size() <= 256;
        if (packing_)
            for (const Candidate &c : colors_) packed_.add(packedOf(c));
    }

    // Boxes whose few colours are packed are answered here, inline; every
    // other target, and the first in each box, takes the general path.
    std::uint32_t find(const Color<T, N> &target) { return find(target.values); }

    [[gnu::always_inline]] std::uint32_t find(const std::array<T, N + 1> &target) {
        if constexpr (kPackable) {
            if (packing_) {
                Cells offsets, cells;
                for (int k = 0; k <= N; ++k) {
                    offsets[k] = offsetOf(target[k]);
                    cells[k] = offsets[k] >> kLowBits;
                }
                const Span &box = levels_[kTableLevel][keyOf(kTableLevel, cells)];
                if (isPacked(box)) [[likely]]
                    return packed_.nearest(candidatesOf(box), packedTarget(offsets));
            }
        }
        return findAnyhow(target);
    }

private:
    // An empty palette answers 0, like the exhaustive search.
    [[gnu::noinline]] std::uint32_t findAnyhow(std::array<T, N + 1> target) {
        if (colors_.empty()) return 0;
        if (entries_.size() > entryLimit_) forgetLists();
        Samples wanted;
        Cells offsets, cells;
        for (int k = 0; k <= N; ++k) {
            wanted[k] = target[k];
            offsets[k] = offsetOf(target[k]);
            cells[k] = offsets[k] >> (kSampleBits - kTableLevel);
        }
        if (!byFirstChannel_.empty()) return walkFirstChannel(wanted);
        Span &box = listOf(kTableLevel, cells);
        if constexpr (kPackable)
            if (isPacked(box)) return packed_.nearest(candidatesOf(box), packedTarget(offsets));
        if (box.count == 1) return box.at;
        if constexpr (kRemembers) {
            if (remembering_) {
                if (box.count != kRemembered) box = {memo_.adopt(box), kRemembered};
                std::uint8_t &remembered = memo_.slot(box.at, offsets);
                if (remembered != 0) return remembered;
                const std::uint32_t index = findWithin(memo_.listOf(box.at), offsets, wanted);
                remembered = static_cast<std::uint8_t>(index);
                return index;
            }
        }
        return findWithin(box, offsets, wanted);
    }

    static constexpr int kSampleBits = 8 * sizeof(T);
    // The boxes down to this level are found by a table, 2^kTableLevel cells
    // per channel and at most 2^20 boxes; a box whose list is still long is
    // cut further, down to single values, and its smaller boxes hang below it.
    static constexpr int kTableLevel = N == 0 ? 8 : N == 1 ? 7 : N == 2 ? 6 : 5;
    static constexpr std::uint32_t kLongList = 16;
    static constexpr std::size_t kChildren = std::size_t{1} << (N + 1);
    static constexpr std::int32_t kLowest = std::numeric_limits<T>::lowest();
    // Exact colours are remembered where a box holds few of them.
    static constexpr int kLowBits = kSampleBits - kTableLevel;
    static constexpr bool kRemembers = kLowBits * (N + 1) <= 6;

    // Squared distances: 8-bit ones fit in 32 bits.
    using Distance = std::conditional_t<sizeof(T) == 1, std::int32_t, std::int64_t>;
    using Samples = std::array<std::int32_t, N + 1>;
    using Cells = std::array<std::uint32_t, N + 1>;
    using Corners = std::array<std::int64_t, N + 1>;

    struct Candidate {
        std::array<T, N + 1> samples;
        std::uint32_t index;
        Distance boxDistance;  // to the box the candidate is listed for
    };

    // A box's list: count colours from entries_[at]. No box has an empty
    // list once made. A box of one colour keeps its index in `at` instead,
    // which spares a look-up; a box cut further keeps there the number of
    // its block of smaller boxes, with the count kCut. Eight bytes a box
    // keep the table in the processor's cache.
    struct Span {
        std::uint32_t at;
        std::uint32_t count;
    };
    static constexpr std::uint32_t kCut = 0xFFFFFFFF;
    // A box of the table whose list is kept, with its answers, by the memo.
    static constexpr std::uint32_t kRemembered = 0xFFFFFFFE;
    // A box of the table whose few colours are named in its span: their
    // indices fill the span but for its top byte, which is kPacked.
    static constexpr std::uint32_t kPacked = 0xFC;
    // Byte samples of up to four channels pack into four bytes a colour.
    static constexpr bool kPackable = sizeof(T) == 1 && N <= 3;
    using Memo = BoxAnswerMemo<N, kRemembers ? kLowBits : 0, Span>;
    struct ChildBlock {
        Span list;  // of the box that was cut
        std::array<Span, kChildren> boxes;
    };

    static std::uint32_t offsetOf(T sample) {
        return static_cast<std::uint32_t>(std::int32_t{sample} - kLowest);
    }

    static Candidate candidateOf(const Color<T, N> &color, std::uint32_t index) {
        Candidate c{{}, index, 0};
        for (int k = 0; k <= N; ++k) c.samples[k] = color[k];
        return c;
    }

    static Distance distanceOf(const Candidate &c, const Samples &target) {
        Distance sum = 0;
        for (int k = 0; k <= N; ++k) {
            const Distance d = std::int32_t{c.samples[k]} - target[k];
            sum += d * d;
        }
        return sum;
    }

    // At equal distance: closerByChannels on the samples as int, then the
    // lower index.
    static bool before(const Candidate &a, const Candidate &b, const Samples &target) {
        for (int k = 0; k <= N; ++k) {
            const std::int32_t da = std::abs(std::int32_t{a.samples[k]} - target[k]);
            const std::int32_t db = std::abs(std::int32_t{b.samples[k]} - target[k]);
            if (da != db) return da < db;
        }
        return a.index < b.index;
    }

    // The channels' cells side by side: the key is made in a few cycles, and
    // each pixel of an error-diffusing scan waits for it.
    static std::size_t keyOf(int level, const Cells &cells) {
        std::size_t key = 0;
        for (int k = 0; k <= N; ++k) key = key << level | cells[k];
        return key;
    }

    // Below the table's box, down the smaller boxes it was cut into.
    std::uint32_t findWithin(const Span &box, const Cells &offsets, const Samples &wanted) {
        const Span *found = &box;
        for (int level = kTableLevel + 1; found->count == kCut; ++level)
            found = &childList(*found, level, offsets);
        const Span span = *found;
        if (span.count == 1) return span.at;
        const Candidate *candidate = entries_.data() + span.at;
        const Candidate *end = candidate + span.count;
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

    // A box of the table's levels, its list made with its parents' if need be.
    Span &listOf(int level, const Cells &cells) {
        Span &span = levels_[level][keyOf(level, cells)];
        if (span.count != 0) return span;
        if (level == 0) {
            span = makeList(level, cells, distinctColors_.data(), distinctColors_.size());
        } else {
            Cells parent = cells;
            for (std::uint32_t &cell : parent) cell >>= 1;
            span = listWithin(listOf(level - 1, parent), level, cells);
        }
        if (level == kTableLevel && !packIfShort(span)) cutIfLong(span, level);
        return span;
    }

    // A short list of a small palette's colours is named in its box's span,
    // so that they are compared at once, whatever their number.
    bool packIfShort(Span &span) {
        if (!packing_ || span.count > PackedCandidates::kCapacity) return false;
        std::array<std::uint32_t, PackedCandidates::kCapacity> indices{};
        if (span.count == 1)
            indices[0] = span.at;
        else
            for (std::uint32_t i = 0; i < span.count; ++i) indices[i] = entries_[span.at + i].index;
        // The list lives on in the span alone: if it was the last one made,
        // its entries are given back.
        if (span.count > 1 && span.at + span.count == entries_.size()) entries_.resize(span.at);
        const std::uint64_t word = PackedCandidates::candidates(indices.data(), span.count);
        span = {static_cast<std::uint32_t>(word),
                static_cast<std::uint32_t>(word >> 32) | kPacked << 24};
        return true;
    }

    static bool isPacked(const Span &span) { return span.count >> 24 == kPacked; }

    static std::uint64_t candidatesOf(const Span &span) {
        return (std::uint64_t{span.count} << 32 | span.at) & 0x00FFFFFFFFFFFFFF;
    }

    std::uint32_t packedOf(const Candidate &c) const {
        Cells offsets;
        for (int k = 0; k <= N; ++k) offsets[k] = offsetOf(c.samples[k]);
        return packedTarget(offsets);
    }

    static std::uint32_t packedTarget(const Cells &offsets) {
        std::uint32_t packed = 0;
        for (int k = 0; k <= N; ++k) packed |= offsets[k] << (8 * k);
        return packed;
    }

    // The smaller box at `level` inside a cut box of the level above, by the
    // target's samples.
    [[gnu::noinline]] const Span &childList(const Span &cut, int level, const Cells &offsets) {
        ChildBlock &block = children_[cut.at];
        Cells cells;
        std::size_t which = 0;
        for (int k = 0; k <= N; ++k) {
            cells[k] = offsets[k] >> (kSampleBits - level);
            which = which << 1 | (cells[k] & 1);
        }
        Span &child = block.boxes[which];
        if (child.count == 0) {
            child = listWithin(block.list, level, cells);
            cutIfLong(child, level);
        }
        return child;
    }

    // Inside a box of one colour there is only that colour.
    Span listWithin(const Span &parent, int level, const Cells &cells) {
        if (parent.count == 1) return parent;
        return makeList(level, cells, entries_.data() + parent.at, parent.count);
    }

    // Long lists are cut into smaller boxes rather than scanned.
    void cutIfLong(Span &span, int level) {
        if (span.count <= kLongList || level == kSampleBits) return;
        children_.push_back({span, {}});
        span = {static_cast<std::uint32_t>(children_.size() - 1), kCut};
    }

    // The colours that can win somewhere in the box, from those that can win
    // somewhere in the box around it.
    [[gnu::noinline]] Span makeList(int level, const Cells &cells, const Candidate *from,
                                    std::size_t count) {
        Corners low, high;
        const int shift = kSampleBits - level;
        for (int k = 0; k <= N; ++k) {
            low[k] = kLowest + (std::int64_t{cells[k]} << shift);
            high[k] = low[k] + (std::int64_t{1} << shift) - 1;
        }
        std::size_t reference = 0;
        std::int64_t bound = std::numeric_limits<std::int64_t>::max();
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t farthest = farthestDistance(from[i], low, high);
            if (farthest < bound) {
                bound = farthest;
                reference = i;
            }
        }
        scratch_.clear();
        for (std::size_t i = 0; i < count; ++i) {
            const std::int64_t inside = boxDistance(from[i], low, high);
            if (inside > bound || outshone(from[i], from[reference], low, high)) continue;
            scratch_.push_back(from[i]);
            scratch_.back().boxDistance = static_cast<Distance>(inside);
        }
        // Long lists are cut further rather than scanned, and need no order;
        // nor do lists that will be packed, whose colours are compared at once.
        const bool packed = packing_ && level == kTableLevel && scratch_.size() <= PackedCandidates::kCapacity;
        if (!packed && (scratch_.size() <= kLongList || level == kSampleBits))
            std::sort(scratch_.begin(), scratch_.end(), [](const Candidate &a, const Candidate &b) {
                return a.boxDistance < b.boxDistance;
            });
        if (scratch_.size() == 1) return {scratch_.front().index, 1};
        const Span span{static_cast<std::uint32_t>(entries_.size()),
                        static_cast<std::uint32_t>(scratch_.size())};
        entries_.insert(entries_.end(), scratch_.begin(), scratch_.end());
        return span;
    }

    static std::int64_t boxDistance(const Candidate &c, const Corners &low, const Corners &high) {
        std::int64_t sum = 0;
        for (int k = 0; k <= N; ++k) {
            const std::int64_t s = c.samples[k];
            const std::int64_t d = s < low[k] ? low[k] - s : s > high[k] ? s - high[k] : 0;
            sum += d * d;
        }
        return sum;
    }

    static std::int64_t farthestDistance(const Candidate &c, const Corners &low,
                                         const Corners &high) {
        std::int64_t sum = 0;
        for (int k = 0; k <= N; ++k) {
            const std::int64_t s = c.samples[k];
            const std::int64_t d = std::max(s - low[k], high[k] - s);
            sum += d * d;
        }
        return sum;
    }

    // True when c is strictly farther than the reference at every point of
    // the box. The difference of the two squared distances splits into one
    // term per channel, each least at one end of the channel's range.
    static bool outshone(const Candidate &c, const Candidate &reference, const Corners &low,
                         const Corners &high) {
        std::int64_t least = 0;
        for (int k = 0; k <= N; ++k) {
            const std::int64_t s = c.samples[k], r = reference.samples[k];
            const auto gap = [&](std::int64_t x) { return (s - x) * (s - x) - (r - x) * (r - x); };
            least += std::min(gap(low[k]), gap(high[k]));
        }
        return least > 0;
    }

    // Lists that overflow again and again belong to a large palette whose
    // colours are near few targets each: then the palette is searched along
    // its first channel instead, which costs no memory and bounds the time.
    void forgetLists() {
        if (++forgotten_ == kForgetsBeforeWalking) {
            byFirstChannel_ = distinctColors_;
            std::sort(byFirstChannel_.begin(), byFirstChannel_.end(),
                      [](const Candidate &a, const Candidate &b) { return a.samples[0] < b.samples[0]; });
        }
        for (ZeroedArray<Span> &level : levels_) std::fill(level.begin(), level.end(), Span{});
        children_.clear();
        entries_.clear();
        memo_.clear();
    }

    // From the nearest first sample outwards, each way until the first
    // channel alone is farther than the best distance found.
    std::uint32_t walkFirstChannel(const Samples &wanted) const {
        const auto start = std::lower_bound(
            byFirstChannel_.begin(), byFirstChannel_.end(), wanted[0],
            [](const Candidate &c, std::int32_t sample) { return c.samples[0] < sample; });
        const Candidate *best = nullptr;
        Distance bestDistance = std::numeric_limits<Distance>::max();
        const auto consider = [&](const Candidate &c) {
            const Distance gap = std::int32_t{c.samples[0]} - wanted[0];
            if (gap * gap > bestDistance) return false;
            const Distance distance = distanceOf(c, wanted);
            if (best == nullptr || distance < bestDistance ||
                (distance == bestDistance && before(c, *best, wanted))) {
                best = &c;
                bestDistance = distance;
            }
            return true;
        };
        for (auto up = start; up != byFirstChannel_.end() && consider(*up); ++up) {
        }
        for (auto down = start; down != byFirstChannel_.begin() && consider(*(down - 1)); --down) {
        }
        return best->index;
    }

    static constexpr int kForgetsBeforeWalking = 3;
    std::size_t entryLimit_;
    int forgotten_ = 0;
    std::vector<Candidate> byFirstChannel_;
    std::vector<Candidate> colors_;  // by palette index
    std::vector<Candidate> distinctColors_;
    std::array<ZeroedArray<Span>, kTableLevel + 1> levels_;
    std::deque<ChildBlock> children_;  // a deque keeps the spans in place as it grows
    std::vector<Candidate> entries_;
    std::vector<Candidate> scratch_;
    bool remembering_ = false;
    bool packing_ = false;
    PackedCandidates packed_;

    Memo memo_;
};

}  // namespace ColorUtilities
