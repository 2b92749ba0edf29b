#pragma once

#include <gif_lib.h>

#include <array>
#include <cstdint>
#include <vector>

namespace GifExport {

// The colour tree of the export's reducer: cubes split at their mid-points,
// pruned by pixel counts until few enough nodes hold pixels, each such node
// one palette colour, the rounded mean of its pixels.
class ExportOctree {
public:
    struct Limits {
        int depth = 8;                    // kept within 2..8
        std::uint32_t maxNodes = 266817;  // the deepest level is pruned beyond this
        std::uint32_t nodesPerBlock = 2048;
    };

    explicit ExportOctree(const Limits &limits);

    void classify(const std::uint8_t *rgb);
    // Merges nodes round by round, each round every node that holds at most
    // the smallest pixel count that survived the round before, until at most
    // `maxColors` nodes hold pixels.
    void reduce(std::uint32_t maxColors);
    // Numbers the colour nodes in post-order and returns their colours.
    std::vector<GifColorType> buildPalette();
    // Palette number of the colour nearest to `rgb` among the colours below
    // the parent of the deepest node on its path; the first wins a tie.
    std::uint32_t nearest(const int *rgb) const;

    std::uint32_t colorCount() const noexcept { return colorCount_; }
    std::uint32_t nodeCount() const noexcept { return nodeCount_; }
    int depth() const noexcept { return depth_; }

private:
    // One cache line; children are positions in nodes_, 0 (the root) for none.
    struct Node {
        std::array<std::uint32_t, 8> children{};
        std::uint32_t parent = 0;
        std::uint32_t pixelCount = 0;   // pixels that passed through; summed up before reducing
        std::uint32_t uniqueCount = 0;  // pixels that ended here
        std::array<std::uint32_t, 3> total{};
        std::array<std::uint8_t, 3> mid{};
        std::uint8_t id = 0;
        std::uint8_t level = 0;
        std::uint8_t census = 0;  // bit k: child k exists
        bool alive = true;        // false once merged into its parent
    };
    static constexpr std::uint32_t kRoot = 0;

    std::uint32_t newNode(std::uint32_t parent, int id);
    static int childId(const Node &node, const int *rgb);
    std::uint32_t leafOf(const int *rgb);
    void pruneLevel(std::uint32_t node);
    void sumPixelCounts();
    void merge(std::uint32_t node);
    std::uint32_t finalThreshold(std::uint32_t maxColors);
    void mergeAtMost(std::uint32_t threshold);
    void numberColors(std::uint32_t node);

    template <class Visit>
    void postOrder(std::uint32_t node, Visit &&visit) {
        for (int id = 0; id < 8; ++id)
            if ((nodes_[node].census >> id) & 1) postOrder(nodes_[node].children[id], visit);
        visit(node);
    }

    std::vector<Node> nodes_;
    std::uint32_t maxNodes_;
    int depth_;
    std::uint32_t nodeCount_ = 0;
    std::uint32_t colorCount_ = 0;
    // The node each recently seen colour ended in, while the tree is not pruned.
    struct MemoSlot {
        std::uint32_t color;
        std::uint32_t node;
    };
    static constexpr std::uint32_t kMemoSlots = 1u << 18;
    std::vector<MemoSlot> memo_;
    // Palette numbers of each node's subtree: post-order makes them a range.
    std::vector<std::uint16_t> rangeBegin_, rangeEnd_;
    std::vector<int> red_, green_, blue_;
};

}  // namespace GifExport
