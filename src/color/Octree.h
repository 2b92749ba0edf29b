#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "color/KeyNumbers.h"
#include "color/MeanChannel.h"
#include "color/Quantizer.h"

namespace Quant {

// Sorts every pixel into a tree that halves each channel's range per level,
// then prunes rarely used branches, pass by pass with a rising count
// threshold, until no more leaves remain than colours were asked for. Each
// node that still holds pixels becomes the mean of those pixels.
template <typename T, int N>
class Octree final : public Quantizer<T, N> {
    using Base = Quantizer<T, N>;
    static constexpr std::uint32_t kChildren = 1u << (N + 1);
    static constexpr std::uint32_t kRootCount = 0xFFFFFFFF;  // the root is never pruned
    static constexpr int kLevels = 9;

    struct Node {
        Node *parent = nullptr;
        // Indexed by child number: ascending order is the visiting order.
        std::array<std::unique_ptr<Node>, kChildren> children{};
        std::uint32_t index = 0;
        std::uint8_t level = 0;
        std::array<double, N + 1> centre{};
        std::uint32_t count = 0;  // pixels that passed through
        std::uint32_t own = 0;    // pixels whose colour the node holds
        std::array<double, N + 1> sums{};
        // Of the subtree, kept for the passes that step over it: the smallest
        // count and the number of nodes that hold colours.
        std::uint32_t rarest = 0;
        std::uint32_t holders = 0;

        std::uint32_t childrenWithPointers() const {
            return static_cast<std::uint32_t>(
                std::count_if(children.begin(), children.end(), [](const auto &c) { return c != nullptr; }));
        }
    };

public:
    Octree(std::uint32_t pixelCount, const T *pixels, std::uint32_t maxColors, std::uint8_t bits)
        : Base(pixelCount, pixels, maxColors), depth_(bits) {
        this->setPrecision(bits, 0);
    }

    void quantize() override { build(std::is_integral_v<T>); }

    // The same palette, inserting one pixel at a time: the plain way, which
    // real samples always take, since their sums depend on the order they
    // are added in.
    void quantizePixelByPixel() { build(false); }

    void reset() override {
        leafCount_ = 0;
        threshold_ = 1;
        nextThreshold_ = 1;
        excess_ = 0;
    }

    std::uint64_t nodeCount() const noexcept { return nodeCount_; }

private:
    void fillLevelSizes() {
        const auto &bounds = this->bounds_;
        for (int k = 0; k <= N; ++k) levelSize_[0][k] = static_cast<double>(bounds.max[k] - bounds.min[k]);
        for (int l = 1; l < kLevels; ++l)
            for (int k = 0; k <= N; ++k) levelSize_[l][k] = levelSize_[l - 1][k] * 0.5;
    }

    void makeRoot() {
        root_ = std::make_unique<Node>();
        root_->parent = root_.get();
        root_->count = kRootCount;
        for (int k = 0; k <= N; ++k)
            root_->centre[k] = (this->bounds_.max[k] + this->bounds_.min[k]) * 0.5;
        ++nodeCount_;
    }

    void build(bool byLeaves) {
        fillLevelSizes();
        makeRoot();
        if constexpr (std::is_integral_v<T>)
            if (byLeaves) insertByLeaves();
        if (!byLeaves) insertPixelByPixel();
        reduce(byLeaves);
        appendColors(*root_);
    }

    // The plain insertion, one pixel at a time. Real samples always take it:
    // their sums depend on the order they are added in.
    void insertPixelByPixel() {
        const T *pixel = this->pixels_;
        for (std::uint32_t i = 0; i < this->pixelCount_; ++i, pixel += N + 1) {
            Node *node = root_.get();
            for (int level = 1; level <= depth_; ++level) {
                std::uint32_t index = 0;
                for (int k = 0; k <= N; ++k)
                    if (static_cast<double>(pixel[k]) > node->centre[k]) index += 1u << k;
                node = &childAt(*node, index, level);
                ++node->count;
            }
            ++node->own;
            for (int k = 0; k <= N; ++k) node->sums[k] += static_cast<double>(pixel[k]);
        }
    }

    // The same tree for integer samples, faster. A channel's turn at each
    // level depends only on its own value and earlier turns, so each value's
    // turns are worked out once; a pixel's leaf is then a few lookups. Sums
    // of integers are exact in any order, so pixels are tallied per leaf
    // and the leaves inserted once each.
    void insertByLeaves() {
        const auto turns = turnTables();
        LeafTally tally(static_cast<std::uint32_t>(depth_ * (N + 1)));
        const T *pixel = this->pixels_;
        for (std::uint32_t i = 0; i < this->pixelCount_; ++i, pixel += N + 1) {
            std::uint32_t leaf = 0;
            for (int k = 0; k <= N; ++k) leaf |= turns[k][static_cast<std::make_unsigned_t<T>>(pixel[k])];
            tally.add(leaf, pixel);
        }
        tally.forEachLeaf([&](std::uint32_t leaf, std::uint32_t count, const std::array<std::int64_t, N + 1> &sums) {
            Node *node = root_.get();
            for (int level = 1; level <= depth_; ++level) {
                node = &childAt(*node, (leaf >> ((depth_ - level) * (N + 1))) & (kChildren - 1), level);
                node->count += count;
            }
            node->own += count;
            for (int k = 0; k <= N; ++k) node->sums[k] += static_cast<double>(sums[k]);
        });
    }

    // For each channel and sample value, its turns at every level as bits of
    // a leaf key: level 1 in the highest group, channel k at bit k of each.
    std::array<std::vector<std::uint32_t>, N + 1> turnTables() const {
        constexpr std::size_t kValues = std::size_t{1} << (8 * sizeof(T));
        std::array<std::vector<std::uint32_t>, N + 1> turns;
        for (int k = 0; k <= N; ++k) {
            turns[k].resize(kValues);
            for (std::size_t u = 0; u < kValues; ++u) {
                const double value = static_cast<double>(static_cast<T>(u));
                double centre = root_->centre[k];
                std::uint32_t key = 0;
                for (int level = 1; level <= depth_; ++level) {
                    const bool upper = value > centre;
                    key |= std::uint32_t{upper} << ((depth_ - level) * (N + 1) + k);
                    const double half = 0.5 * levelSize_[level][k];
                    centre = centre + (upper ? half : -half);
                }
                turns[k][u] = key;
            }
        }
        return turns;
    }

    // Pixels and channel sums per leaf key: a dense table for short keys,
    // numbered keys otherwise.
    class LeafTally {
    public:
        explicit LeafTally(std::uint32_t keyBits) : dense_(keyBits <= kDenseBits) {
            if (dense_) {
                counts_.assign(std::size_t{1} << keyBits, 0);
                sums_.assign((std::size_t{1} << keyBits) * (N + 1), 0);
            }
        }

        void add(std::uint32_t leaf, const T *pixel) {
            std::size_t slot = leaf;
            if (!dense_) {
                bool fresh = false;
                slot = numbers_.numberOf(leaf, fresh);
                if (fresh) {
                    leaves_.push_back(leaf);
                    counts_.push_back(0);
                    sums_.resize(sums_.size() + N + 1, 0);
                }
            }
            ++counts_[slot];
            for (int k = 0; k <= N; ++k) sums_[slot * (N + 1) + k] += pixel[k];
        }

        template <class Visit>
        void forEachLeaf(Visit &&visit) const {
            std::array<std::int64_t, N + 1> sums;
            for (std::size_t slot = 0; slot < counts_.size(); ++slot) {
                if (counts_[slot] == 0) continue;
                for (int k = 0; k <= N; ++k) sums[k] = sums_[slot * (N + 1) + k];
                visit(dense_ ? static_cast<std::uint32_t>(slot) : leaves_[slot], counts_[slot], sums);
            }
        }

    private:
        static constexpr std::uint32_t kDenseBits = 20;
        struct LeafHash {
            std::uint64_t operator()(std::uint32_t key) const { return mix64(key); }
        };
        bool dense_;
        std::vector<std::uint32_t> counts_;
        std::vector<std::int64_t> sums_;
        std::vector<std::uint32_t> leaves_;
        KeyNumbers<std::uint32_t, LeafHash> numbers_;
    };

    Node &childAt(Node &node, std::uint32_t index, int level) {
        std::unique_ptr<Node> &child = node.children[index];
        if (!child) {
            child = std::make_unique<Node>();
            child->parent = &node;
            child->index = index;
            child->level = static_cast<std::uint8_t>(level);
            for (int k = 0; k <= N; ++k) {
                const double half = 0.5 * levelSize_[level][k];
                child->centre[k] = node.centre[k] + ((index >> k) & 1 ? half : -half);
            }
            ++nodeCount_;
            if (level == depth_) ++leafCount_;
        }
        return *child;
    }

    void reduce(bool skipping) {
        // Unsigned on purpose: with fewer leaves than colours the excess is
        // huge, and one pass with threshold 1 still prunes single pixels.
        excess_ = static_cast<std::int64_t>(std::uint64_t{leafCount_ - this->maxColors_});
        nextThreshold_ = 1;
        if (leafCount_ == this->maxColors_) return;
        if (skipping) summarise(*root_);
        do {
            threshold_ = nextThreshold_;
            nextThreshold_ = root_->count - 1;
            leafCount_ = 0;
            if (skipping)
                prunePassSkipping(*root_);
            else
                prunePass(*root_);
            excess_ = std::int64_t{leafCount_} - std::int64_t{this->maxColors_};
            // A root without children cannot lose more colours; asking for
            // fewer than it holds (none) would otherwise never end.
        } while (excess_ > 0 && root_->childrenWithPointers() > 0);
    }

    // Prunes, bottom up, the nodes that few pixels pass through, while there
    // are more colours than asked for.
    void prunePass(Node &node) {
        for (auto &child : node.children)
            if (child) prunePass(*child);
        if (pruneIfRare(node)) return;
        countSurvivor(node);
    }

    bool pruneIfRare(Node &node) {
        if (node.count > threshold_ || excess_ <= 0) return false;
        if (node.parent->childrenWithPointers() >= 2) --excess_;
        pruneChild(*node.parent, node.index);
        return true;
    }

    void countSurvivor(const Node &node) {
        if (node.own > 0) ++leafCount_;
        nextThreshold_ = std::min(nextThreshold_, node.count);
    }

    // The same pass, stepping over subtrees where it would prune nothing:
    // those whose rarest node is above the threshold, or all of them once
    // the excess is gone. Such a subtree only adds its colour holders and
    // its rarest count, which each node keeps for its subtree.
    void prunePassSkipping(Node &node) {
        if (node.rarest > threshold_ || excess_ <= 0) {
            leafCount_ += node.holders;
            nextThreshold_ = std::min(nextThreshold_, node.rarest);
            return;
        }
        for (auto &child : node.children)
            if (child) prunePassSkipping(*child);
        if (pruneIfRare(node)) return;
        countSurvivor(node);
        summariseNode(node);
    }

    static void summarise(Node &node) {
        for (auto &child : node.children)
            if (child) summarise(*child);
        summariseNode(node);
    }

    static void summariseNode(Node &node) {
        node.rarest = node.count;
        node.holders = node.own > 0 ? 1 : 0;
        for (const auto &child : node.children)
            if (child) {
                node.rarest = std::min(node.rarest, child->rarest);
                node.holders += child->holders;
            }
    }

    // The parent takes over the child's pixels; destroys the child.
    static void pruneChild(Node &parent, std::uint32_t index) {
        Node &child = *parent.children[index];
        parent.own += child.own;
        for (int k = 0; k <= N; ++k) parent.sums[k] += child.sums[k];
        parent.children[index].reset();
    }

    void appendColors(const Node &node) {
        for (const auto &child : node.children)
            if (child) appendColors(*child);
        if (node.own == 0) return;
        const auto &bounds = this->bounds_;
        ColorUtilities::Color<T, N> color;
        for (int k = 0; k <= N; ++k)
            color[k] = channelFromMean<T>(node.sums[k] / node.own, bounds.min[k], bounds.max[k]);
        this->palette_->colors.push_back(color);
    }

    std::unique_ptr<Node> root_;
    std::uint8_t depth_;
    std::uint32_t leafCount_ = 0;
    std::uint32_t threshold_ = 1;
    std::uint32_t nextThreshold_ = 1;
    std::int64_t excess_ = 0;
    std::array<std::array<double, N + 1>, kLevels> levelSize_{};
    std::uint64_t nodeCount_ = 0;
};

}  // namespace Quant
