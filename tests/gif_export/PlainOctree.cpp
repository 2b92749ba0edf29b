#include "PlainOctree.h"

#include <algorithm>

namespace plain_export {

struct PlainOctree::Node {
    Node *parent = nullptr;
    std::array<Node *, 8> children{};
    std::uint8_t id = 0;
    std::uint8_t level = 0;
    std::uint8_t census = 0;  // bit k: child k exists
    std::array<std::uint8_t, 3> mid{};
    std::uint32_t pixelCount = 0;   // pixels that passed through
    std::uint32_t uniqueCount = 0;  // pixels that ended here
    std::array<std::uint32_t, 3> total{};
    std::uint32_t paletteIndex = 0;
};

struct PlainOctree::Search {
    std::uint32_t bestDistance = 0xFFFFFFFFu;
    std::uint32_t bestIndex = 0;
};

PlainOctree::PlainOctree(const Limits &limits)
    : nodesPerBlock_(std::max<std::uint32_t>(limits.nodesPerBlock, 1)),
      usedInBlock_(nodesPerBlock_),
      maxNodes_(limits.maxNodes),
      depth_(std::clamp(limits.depth, 2, 8)) {
    root_ = newNode(nullptr, 0);
    root_->parent = root_;
    root_->mid = {128, 128, 128};
    root_->pixelCount = 0xFFFFFFFFu;  // never pruned
}

PlainOctree::~PlainOctree() = default;

PlainOctree::Node *PlainOctree::newNode(Node *parent, int id) {
    if (usedInBlock_ == nodesPerBlock_) {
        blocks_.push_back(std::make_unique<Node[]>(nodesPerBlock_));
        usedInBlock_ = 0;
    }
    Node *node = &blocks_.back()[usedInBlock_++];
    ++nodeCount_;
    if (parent == nullptr) return node;
    node->parent = parent;
    node->id = static_cast<std::uint8_t>(id);
    node->level = static_cast<std::uint8_t>(parent->level + 1);
    const int half = (1 << (8 - node->level)) / 2;
    for (int c = 0; c < 3; ++c)
        node->mid[c] = static_cast<std::uint8_t>(parent->mid[c] + ((id >> c) & 1 ? half : -half));
    parent->children[id] = node;
    parent->census = static_cast<std::uint8_t>(parent->census | (1u << id));
    if (node->level == depth_) ++colorCount_;
    return node;
}

int PlainOctree::childId(const Node &node, const int *rgb) {
    return (rgb[0] > node.mid[0] ? 1 : 0) + (rgb[1] > node.mid[1] ? 2 : 0) +
           (rgb[2] > node.mid[2] ? 4 : 0);
}

void PlainOctree::classify(const std::uint8_t *pixel) {
    if (nodeCount_ > maxNodes_) pruneDeepestLevel();
    const int rgb[3] = {pixel[0], pixel[1], pixel[2]};
    Node *node = root_;
    for (int level = 1; level <= depth_; ++level) {
        const int id = childId(*node, rgb);
        Node *child = (node->census >> id) & 1 ? node->children[id] : newNode(node, id);
        ++child->pixelCount;
        node = child;
    }
    ++node->uniqueCount;
    for (int c = 0; c < 3; ++c) node->total[c] += static_cast<std::uint32_t>(rgb[c]);
}

void PlainOctree::pruneDeepestLevel() {
    pruneLevel(*root_);
    --depth_;
}

void PlainOctree::pruneLevel(Node &node) {
    for (int id = 0; id < 8; ++id)
        if ((node.census >> id) & 1) pruneLevel(*node.children[id]);
    if (node.level == depth_) merge(node);
}

void PlainOctree::merge(Node &node) {
    Node &parent = *node.parent;
    parent.census = static_cast<std::uint8_t>(parent.census & ~(1u << node.id));
    parent.children[node.id] = nullptr;
    parent.uniqueCount += node.uniqueCount;
    for (int c = 0; c < 3; ++c) parent.total[c] += node.total[c];
    --nodeCount_;
}

// Each round merges every node that holds at most the smallest pixel count
// that survived the round before.
void PlainOctree::reduce(std::uint32_t maxColors) {
    nextThreshold_ = 1;
    while (colorCount_ > maxColors) {
        threshold_ = nextThreshold_;
        nextThreshold_ = root_->pixelCount - 1;
        colorCount_ = 0;
        reduceBelow(*root_);
    }
}

void PlainOctree::reduceBelow(Node &node) {
    for (int id = 0; id < 8; ++id)
        if ((node.census >> id) & 1) reduceBelow(*node.children[id]);
    if (node.pixelCount <= threshold_) {
        merge(node);
        return;
    }
    nextThreshold_ = std::min(nextThreshold_, node.pixelCount);
    if (node.uniqueCount > 0) ++colorCount_;
}

std::vector<GifColorType> PlainOctree::buildPalette() {
    palette_.clear();
    numberColors(*root_, palette_);
    colorCount_ = static_cast<std::uint32_t>(palette_.size());
    return palette_;
}

void PlainOctree::numberColors(Node &node, std::vector<GifColorType> &palette) {
    for (int id = 0; id < 8; ++id)
        if ((node.census >> id) & 1) numberColors(*node.children[id], palette);
    if (node.uniqueCount == 0) return;
    const std::uint32_t n = node.uniqueCount;
    const auto mean = [&](int c) { return static_cast<GifByteType>(((n >> 1) + node.total[c]) / n); };
    node.paletteIndex = static_cast<std::uint32_t>(palette.size());
    palette.push_back(GifColorType{mean(0), mean(1), mean(2)});
}

std::uint32_t PlainOctree::nearest(const int *rgb) const {
    const Node *node = root_;
    for (int level = 1; level <= depth_; ++level) {
        const int id = childId(*node, rgb);
        if (((node->census >> id) & 1) == 0) break;
        node = node->children[id];
    }
    Search search;
    searchSubtree(*node->parent, rgb, search);
    return search.bestIndex;
}

void PlainOctree::searchSubtree(const Node &node, const int *rgb, Search &search) const {
    for (int id = 0; id < 8; ++id)
        if ((node.census >> id) & 1) searchSubtree(*node.children[id], rgb, search);
    if (node.uniqueCount == 0) return;
    const GifColorType &color = palette_[node.paletteIndex];
    const int dr = color.Red - rgb[0], dg = color.Green - rgb[1], db = color.Blue - rgb[2];
    const auto distance = static_cast<std::uint32_t>(dr * dr + dg * dg + db * db);
    if (distance < search.bestDistance) {
        search.bestDistance = distance;
        search.bestIndex = node.paletteIndex;
    }
}

}  // namespace plain_export
