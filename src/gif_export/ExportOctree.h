#pragma once

#include <gif_lib.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace GifExport {

// The colour tree of the export's reducer: cubes split at their mid-points,
// pruned by pixel counts until few enough leaves hold pixels, each such node
// one palette colour, the rounded mean of its pixels.
class ExportOctree {
public:
    struct Limits {
        int depth = 8;                  // kept within 2..8
        std::uint32_t maxNodes = 266817;  // the deepest level is pruned beyond this
        std::uint32_t nodesPerBlock = 2048;
    };

    explicit ExportOctree(const Limits &limits);
    ExportOctree(const ExportOctree &) = delete;
    ExportOctree &operator=(const ExportOctree &) = delete;
    ~ExportOctree();

    void classify(const std::uint8_t *rgb);
    void reduce(std::uint32_t maxColors);
    // Numbers the colour nodes in post-order and returns their colours.
    std::vector<GifColorType> buildPalette();
    // Palette number of the colour nearest to `rgb` within the neighbourhood
    // of the cube that holds it.
    std::uint32_t nearest(const int *rgb) const;

    std::uint32_t colorCount() const noexcept { return colorCount_; }
    std::uint32_t nodeCount() const noexcept { return nodeCount_; }
    int depth() const noexcept { return depth_; }

private:
    struct Node;
    struct Search;

    Node *newNode(Node *parent, int id);
    static int childId(const Node &node, const int *rgb);
    void pruneDeepestLevel();
    void pruneLevel(Node &node);
    void merge(Node &node);
    void reduceBelow(Node &node);
    void numberColors(Node &node, std::vector<GifColorType> &palette);
    void searchSubtree(const Node &node, const int *rgb, Search &search) const;

    std::vector<std::unique_ptr<Node[]>> blocks_;
    std::uint32_t nodesPerBlock_;
    std::uint32_t usedInBlock_;
    std::uint32_t maxNodes_;
    Node *root_;
    int depth_;
    std::uint32_t nodeCount_ = 0;
    std::uint32_t colorCount_ = 0;
    std::uint32_t threshold_ = 0;
    std::uint32_t nextThreshold_ = 1;
    std::vector<GifColorType> palette_;
};

}  // namespace GifExport
