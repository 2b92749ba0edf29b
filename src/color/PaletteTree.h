#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "color/ColorDistance.h"
#include "color/FirstOfEachColor.h"
#include "color/Palette.h"

namespace ColorUtilities {

// Exact nearest-colour search by a tree of boxes over the palette, for any
// sample type, answering what the exhaustive search answers.
//
// Each node holds the bounding box of its colours. A node is skipped only
// when the least distance from the target to its box exceeds the best
// distance found: every colour inside is then strictly farther, so it could
// neither win nor tie. The box distance is summed like colorDistance, from
// gaps no larger than the colours' own differences, and rounding in double
// keeps that order; so the rule holds for real samples too, as long as
// everything is finite (the caller searches exhaustively otherwise).
// Colours are compared by the exhaustive search's whole order (distance,
// channel differences, index), so the order of the visit does not matter.
// Building costs the palette's size times the tree's depth.
template <typename T, int N>
class PaletteTree {
public:
    PaletteTree() = default;
    explicit PaletteTree(const Palette<T, N> &palette) {
        // Repeats would fill leaves that no split can divide.
        const FirstOfEachColor distinct = firstOfEachColor(palette);
        entries_.reserve(distinct.kept.size());
        for (const std::uint32_t i : distinct.kept) entries_.push_back({palette.colors[i], i});
        if (entries_.empty()) return;
        nodes_.resize(1);
        build(0, 0, static_cast<std::uint32_t>(entries_.size()));
        positions_.resize(palette.size());
        for (std::uint32_t at = 0; at < entries_.size(); ++at) positions_[entries_[at].index] = at;
        for (std::uint32_t i = 0; i < palette.size(); ++i) positions_[i] = positions_[distinct.twinOf[i]];
    }

    // An empty palette answers 0, like the exhaustive search. A likely
    // answer, when known (the last one, say), bounds the visit from the
    // start; any palette index does, and the answer does not depend on it.
    std::uint32_t find(const Color<T, N> &target, std::uint32_t likely = kUnknownIndex) const {
        if (entries_.empty()) return 0;
        const Entry *best = nullptr;
        Distance bestDistance = 0;
        if (likely < positions_.size()) {
            best = &entries_[positions_[likely]];
            bestDistance = distanceOf(target, best->color);
        }
        std::uint32_t stack[kMaxDepth];
        int depth = 0;
        stack[depth++] = 0;
        while (depth > 0) {
            const Node &node = nodes_[stack[--depth]];
            if (best != nullptr && boxDistance(node, target) > bestDistance) continue;
            if (node.first == kLeaf) {
                for (std::uint32_t i = node.begin; i < node.end; ++i) {
                    const Distance distance = distanceOf(target, entries_[i].color);
                    if (best == nullptr || before(entries_[i], distance, *best, bestDistance, target)) {
                        best = &entries_[i];
                        bestDistance = distance;
                    }
                }
                continue;
            }
            // The nearer half is visited first: pushed last.
            const bool lowFirst = target[node.axis] < node.split;
            stack[depth++] = lowFirst ? node.first + 1 : node.first;
            stack[depth++] = lowFirst ? node.first : node.first + 1;
        }
        return best->index;
    }

    // Whether every sample of the palette is finite, which the search needs.
    static bool searchable(const Palette<T, N> &palette) {
        if constexpr (std::is_floating_point_v<T>)
            for (const Color<T, N> &color : palette.colors)
                for (int k = 0; k <= N; ++k)
                    if (!std::isfinite(color[k])) return false;
        return true;
    }

private:
    // Integer samples of up to 16 bits give squared distances that 64-bit
    // integers hold exactly, as doubles do: the same order, in fewer cycles.
    using Distance = std::conditional_t<std::is_integral_v<T>, std::int64_t, double>;

    static constexpr std::uint32_t kLeafSize = 8;
    static constexpr std::uint32_t kLeaf = 0xFFFFFFFF;
    // Nodes halve down to the leaves, at most 32 levels; the visit keeps at
    // most one waiting sibling per level.
    static constexpr int kMaxDepth = 64;

    struct Entry {
        Color<T, N> color;
        std::uint32_t index;
    };

    struct Node {
        std::array<T, N + 1> low, high;
        std::uint32_t begin, end;
        std::uint32_t first;  // the lower child; the upper follows it. kLeaf for a leaf
        int axis;  // of the split, and its value: lower colours go first
        T split;
    };

    static bool before(const Entry &a, Distance distanceA, const Entry &b, Distance distanceB,
                       const Color<T, N> &target) {
        if (distanceA != distanceB) return distanceA < distanceB;
        if (closerByChannels(a.color, b.color, target)) return true;
        if (closerByChannels(b.color, a.color, target)) return false;
        return a.index < b.index;
    }

    static Distance distanceOf(const Color<T, N> &target, const Color<T, N> &color) {
        if constexpr (std::is_integral_v<T>) {
            Distance sum = 0;
            for (int k = 0; k <= N; ++k) {
                const Distance d = Distance{target[k]} - Distance{color[k]};
                sum += d * d;
            }
            return sum;
        } else {
            return colorDistance(target, color);
        }
    }

    // No larger than the distance to any colour of the box.
    static Distance boxDistance(const Node &node, const Color<T, N> &target) {
        Distance sum = 0;
        for (int k = 0; k <= N; ++k) {
            const auto t = static_cast<Distance>(target[k]);
            const auto low = static_cast<Distance>(node.low[k]);
            const auto high = static_cast<Distance>(node.high[k]);
            const Distance gap = t < low ? low - t : t > high ? t - high : 0;
            sum += gap * gap;
        }
        return sum;
    }

    // Fills node `at` for entries [begin, end), and below it its children.
    void build(std::uint32_t at, std::uint32_t begin, std::uint32_t end) {
        Node node{};
        node.begin = begin;
        node.end = end;
        node.low = node.high = entries_[begin].color.values;
        for (std::uint32_t i = begin + 1; i < end; ++i)
            for (int k = 0; k <= N; ++k) {
                node.low[k] = std::min(node.low[k], entries_[i].color[k]);
                node.high[k] = std::max(node.high[k], entries_[i].color[k]);
            }
        node.first = kLeaf;
        for (int k = 1; k <= N; ++k)
            if (spread(node, k) > spread(node, node.axis)) node.axis = k;
        if (end - begin > kLeafSize && spread(node, node.axis) > 0) {
            const std::uint32_t middle = begin + (end - begin) / 2;
            const int axis = node.axis;
            std::nth_element(entries_.begin() + begin, entries_.begin() + middle,
                             entries_.begin() + end, [axis](const Entry &a, const Entry &b) {
                                 return a.color[axis] < b.color[axis];
                             });
            node.split = entries_[middle].color[axis];
            node.first = static_cast<std::uint32_t>(nodes_.size());
            nodes_.resize(nodes_.size() + 2);
            build(node.first, begin, middle);
            build(node.first + 1, middle, end);
        }
        nodes_[at] = node;
    }

    static double spread(const Node &node, int k) {
        return static_cast<double>(node.high[k]) - static_cast<double>(node.low[k]);
    }

    std::vector<Entry> entries_;
    std::vector<Node> nodes_;
    std::vector<std::uint32_t> positions_;  // of each palette index in entries_
};

}  // namespace ColorUtilities
