#pragma once

#include <gif_lib.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "gif_export/ExportOctree.h"

namespace plain_export {

// The export reducer's colour tree exactly as first written: reduction round
// by round over the whole tree, nearest colours by walking a subtree. The
// faster tree of the plug-in must agree with it to the bit.
class PlainOctree {
public:
    using Limits = GifExport::ExportOctree::Limits;

    // What reduceColorsWith asks of a tree, nothing more.
    explicit PlainOctree(const Limits &limits);
    ~PlainOctree();
    void classify(const std::uint8_t *rgb);
    void reduce(std::uint32_t maxColors);
    std::vector<GifColorType> buildPalette();
    std::uint32_t nearest(const int *rgb) const;

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

}  // namespace plain_export
