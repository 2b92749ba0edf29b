#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

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

    void quantize() override {
        fillLevelSizes();
        makeRoot();
        insertPixels();
        reduce();
        appendColors(*root_);
    }

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

    void insertPixels() {
        const T *pixel = this->pixels_;
        for (std::uint32_t i = 0; i < this->pixelCount_; ++i, pixel += N + 1) {
            Node *node = root_.get();
            for (int level = 1; level <= depth_; ++level) {
                node = &childFor(*node, pixel, level);
                ++node->count;
            }
            ++node->own;
            for (int k = 0; k <= N; ++k) node->sums[k] += static_cast<double>(pixel[k]);
        }
    }

    // A sample exactly on the centre goes to the lower half.
    Node &childFor(Node &node, const T *pixel, int level) {
        std::uint32_t index = 0;
        for (int k = 0; k <= N; ++k)
            if (static_cast<double>(pixel[k]) > node.centre[k]) index += 1u << k;
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

    void reduce() {
        // Unsigned on purpose: with fewer leaves than colours the excess is
        // huge, and one pass with threshold 1 still prunes single pixels.
        excess_ = static_cast<std::int64_t>(std::uint64_t{leafCount_ - this->maxColors_});
        nextThreshold_ = 1;
        if (leafCount_ == this->maxColors_) return;
        do {
            threshold_ = nextThreshold_;
            nextThreshold_ = root_->count - 1;
            leafCount_ = 0;
            prunePass(*root_);
            excess_ = std::int64_t{leafCount_} - std::int64_t{this->maxColors_};
            // A root without children cannot lose more colours; asking for
            // fewer than it holds (none) would otherwise never end.
        } while (excess_ > 0 && root_->childrenWithPointers() > 0);
    }

    void prunePass(Node &node) {
        for (auto &child : node.children)
            if (child) prunePass(*child);
        if (node.count <= threshold_ && excess_ > 0) {
            if (node.parent->childrenWithPointers() >= 2) --excess_;
            pruneChild(*node.parent, node.index);
            return;
        }
        if (node.own > 0) ++leafCount_;
        nextThreshold_ = std::min(nextThreshold_, node.count);
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
