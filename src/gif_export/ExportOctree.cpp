#include "gif_export/ExportOctree.h"

#include <algorithm>
#include <limits>

#include "gif_export/ValueCounts.h"

namespace GifExport {
namespace {

constexpr std::uint32_t kNever = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kNoColor = kNever;

std::uint32_t memoSlot(std::uint32_t color) { return (color * 0x9E3779B1u) >> 14; }

}  // namespace

ExportOctree::ExportOctree(const Limits &limits)
    : maxNodes_(limits.maxNodes),
      depth_(std::clamp(limits.depth, 2, 8)),
      memo_(kMemoSlots, MemoSlot{kNoColor, kRoot}) {
    nodes_.reserve(std::max<std::uint32_t>(limits.nodesPerBlock, 64));
    newNode(kRoot, 0);
    nodes_[kRoot].mid = {128, 128, 128};
}

std::uint32_t ExportOctree::newNode(std::uint32_t parent, int id) {
    const auto index = static_cast<std::uint32_t>(nodes_.size());
    nodes_.emplace_back();
    ++nodeCount_;
    if (index == kRoot) return index;
    Node &node = nodes_[index];
    Node &up = nodes_[parent];
    node.parent = parent;
    node.id = static_cast<std::uint8_t>(id);
    node.level = static_cast<std::uint8_t>(up.level + 1);
    const int half = (1 << (8 - node.level)) / 2;
    for (int c = 0; c < 3; ++c)
        node.mid[c] = static_cast<std::uint8_t>(up.mid[c] + ((id >> c) & 1 ? half : -half));
    up.children[id] = index;
    up.census = static_cast<std::uint8_t>(up.census | (1u << id));
    if (node.level == depth_) ++colorCount_;
    return index;
}

int ExportOctree::childId(const Node &node, const int *rgb) {
    return (rgb[0] > node.mid[0] ? 1 : 0) + (rgb[1] > node.mid[1] ? 2 : 0) +
           (rgb[2] > node.mid[2] ? 4 : 0);
}

// Pixel counts along the path are left for sumPixelCounts: every pixel that
// passed through a node ended in its subtree, so the counts follow from where
// pixels ended.
void ExportOctree::classify(const std::uint8_t *pixel) {
    if (nodeCount_ > maxNodes_) {
        pruneLevel(kRoot);
        --depth_;
        for (MemoSlot &slot : memo_) slot.color = kNoColor;
    }
    const int rgb[3] = {pixel[0], pixel[1], pixel[2]};
    const std::uint32_t color = std::uint32_t(rgb[0]) << 16 | std::uint32_t(rgb[1]) << 8 | std::uint32_t(rgb[2]);
    MemoSlot &slot = memo_[memoSlot(color)];
    if (slot.color != color) slot = {color, leafOf(rgb)};
    Node &leaf = nodes_[slot.node];
    ++leaf.uniqueCount;
    for (int c = 0; c < 3; ++c) leaf.total[c] += static_cast<std::uint32_t>(rgb[c]);
}

std::uint32_t ExportOctree::leafOf(const int *rgb) {
    // No reallocation while the path is walked.
    if (nodes_.capacity() - nodes_.size() < 8) nodes_.reserve(nodes_.capacity() * 2);
    std::uint32_t node = kRoot;
    for (int level = 1; level <= depth_; ++level) {
        const Node &here = nodes_[node];
        const int id = childId(here, rgb);
        node = (here.census >> id) & 1 ? here.children[id] : newNode(node, id);
    }
    return node;
}

void ExportOctree::pruneLevel(std::uint32_t node) {
    postOrder(node, [this](std::uint32_t n) {
        if (nodes_[n].level == depth_) merge(n);
    });
}

void ExportOctree::merge(std::uint32_t index) {
    Node &node = nodes_[index];
    Node &parent = nodes_[node.parent];
    parent.census = static_cast<std::uint8_t>(parent.census & ~(1u << node.id));
    parent.children[node.id] = kRoot;
    node.alive = false;
    parent.uniqueCount += node.uniqueCount;
    for (int c = 0; c < 3; ++c) parent.total[c] += node.total[c];
    --nodeCount_;
}

// A node's pixel count never changes while merging and its descendants hold
// no more than it does, so after the round with threshold t exactly the nodes
// counting more than t are left, and such a node holds pixels when it did
// from the start or one of its children counted at most t. The rounds are
// therefore replayed on these counts, and the tree merged once, at the
// threshold of the last round.
void ExportOctree::reduce(std::uint32_t maxColors) {
    if (colorCount_ <= maxColors) return;
    sumPixelCounts();
    const std::uint32_t threshold = finalThreshold(maxColors);
    colorCount_ = 0;
    mergeAtMost(threshold);
}

// Children come after their parents in nodes_, so one backward pass sees
// every node after all of its children.
void ExportOctree::sumPixelCounts() {
    for (std::size_t n = nodes_.size(); n-- > 1;) {
        Node &node = nodes_[n];
        if (!node.alive) continue;
        node.pixelCount += node.uniqueCount;
        nodes_[node.parent].pixelCount += node.pixelCount;
    }
    nodes_[kRoot].pixelCount = kNever;  // never merged
}

std::uint32_t ExportOctree::finalThreshold(std::uint32_t maxColors) {
    std::vector<std::uint32_t> smallestChild(nodes_.size(), kNever);
    for (std::size_t n = 1; n < nodes_.size(); ++n)
        if (nodes_[n].alive) {
            std::uint32_t &smallest = smallestChild[nodes_[n].parent];
            smallest = std::min(smallest, nodes_[n].pixelCount);
        }
    ValueCounts starts, ends, pixelCounts;
    for (std::size_t n = 0; n < nodes_.size(); ++n) {
        const Node &node = nodes_[n];
        if (!node.alive) continue;
        const std::uint32_t start = node.uniqueCount > 0 ? 0 : smallestChild[n];
        const std::uint32_t end = n == kRoot ? kNever : node.pixelCount;
        if (n != kRoot) pixelCounts.add(node.pixelCount);
        if (start >= end) continue;
        starts.add(start);
        if (end != kNever) ends.add(end);
    }
    starts.seal(), ends.seal(), pixelCounts.seal();
    constexpr std::uint32_t kLast = kNever - 1;
    std::uint32_t threshold = 1;
    while (starts.countAtMost(threshold) - ends.countAtMost(threshold) > maxColors && threshold != kLast)
        threshold = std::min(kLast, pixelCounts.nextAbove(threshold).value_or(kLast));
    return threshold;
}

void ExportOctree::mergeAtMost(std::uint32_t threshold) {
    for (std::size_t n = nodes_.size(); n-- > 0;) {
        const Node &node = nodes_[n];
        if (!node.alive) continue;
        if (node.pixelCount <= threshold)
            merge(static_cast<std::uint32_t>(n));
        else if (node.uniqueCount > 0)
            ++colorCount_;
    }
}

std::vector<GifColorType> ExportOctree::buildPalette() {
    rangeBegin_.assign(nodes_.size(), 0);
    rangeEnd_.assign(nodes_.size(), 0);
    red_.clear(), green_.clear(), blue_.clear();
    numberColors(kRoot);
    colorCount_ = static_cast<std::uint32_t>(red_.size());
    std::vector<GifColorType> palette;
    for (std::size_t i = 0; i < red_.size(); ++i)
        palette.push_back({GifByteType(red_[i]), GifByteType(green_[i]), GifByteType(blue_[i])});
    return palette;
}

void ExportOctree::numberColors(std::uint32_t index) {
    rangeBegin_[index] = static_cast<std::uint16_t>(std::min<std::size_t>(red_.size(), 0xFFFF));
    for (int id = 0; id < 8; ++id)
        if ((nodes_[index].census >> id) & 1) numberColors(nodes_[index].children[id]);
    const Node &node = nodes_[index];
    if (node.uniqueCount > 0) {
        const std::uint32_t n = node.uniqueCount;
        const auto mean = [&](int c) { return static_cast<int>(((n >> 1) + node.total[c]) / n); };
        red_.push_back(mean(0)), green_.push_back(mean(1)), blue_.push_back(mean(2));
    }
    rangeEnd_[index] = static_cast<std::uint16_t>(std::min<std::size_t>(red_.size(), 0xFFFF));
}

// Distances first, then the first smallest: both loops vectorise.
std::uint32_t ExportOctree::nearest(const int *rgb) const {
    std::uint32_t node = kRoot;
    for (int level = 1; level <= depth_; ++level) {
        const Node &here = nodes_[node];
        const int id = childId(here, rgb);
        if (((here.census >> id) & 1) == 0) break;
        node = here.children[id];
    }
    const std::uint32_t parent = nodes_[node].parent;
    // A reduced palette has at most 256 colours; a larger one never reaches a map.
    const std::uint32_t begin = rangeBegin_[parent];
    const std::uint32_t count = std::min<std::uint32_t>(rangeEnd_[parent] - begin, 256);
    const int *red = red_.data() + begin, *green = green_.data() + begin, *blue = blue_.data() + begin;
    std::array<int, 256> distance;
    int smallest = std::numeric_limits<int>::max();
    for (std::uint32_t i = 0; i < count; ++i) {
        const int dr = red[i] - rgb[0], dg = green[i] - rgb[1], db = blue[i] - rgb[2];
        distance[i] = dr * dr + dg * dg + db * db;
        smallest = std::min(smallest, distance[i]);
    }
    std::uint32_t first = 0;
    while (first < count && distance[first] != smallest) ++first;
    return begin + first;
}

}  // namespace GifExport
