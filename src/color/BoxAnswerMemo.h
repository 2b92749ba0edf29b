#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ColorUtilities {

// Remembers nearest-colour answers for every exact colour inside some boxes
// of a grid, one block of slots per box, together with what the grid kept
// for the box (List). Photographs repeat most of their colours, and the
// colours asked for one after another lie in few boxes, so the blocks in use
// stay in the processor's cache, which a byte a slot helps. A slot holds the
// index, 0 standing for unknown: an answer of 0 is never remembered, and
// palettes of more than kColors colours are not served.
template <int N, int kLowBits, class List>
class BoxAnswerMemo {
public:
    static constexpr std::size_t kSlotsPerBox = std::size_t{1} << (kLowBits * (N + 1));
    static constexpr std::size_t kColors = 256;

    // A new block for a box, holding the box's list; returns its number.
    std::uint32_t adopt(const List &list) {
        blocks_.push_back({list, {}});
        return static_cast<std::uint32_t>(blocks_.size() - 1);
    }

    const List &listOf(std::uint32_t block) const { return blocks_[block].list; }

    // The slot of the colour whose samples, as offsets from the type's
    // lowest value, are `offsets`.
    template <class Offsets>
    std::uint8_t &slot(std::uint32_t block, const Offsets &offsets) {
        return blocks_[block].slots[inside(offsets)];
    }

    void clear() { blocks_.clear(); }
    std::size_t size() const { return blocks_.size(); }

private:
    template <class Offsets>
    static std::size_t inside(const Offsets &offsets) {
        std::size_t at = 0;
        for (int k = 0; k <= N; ++k) at = at << kLowBits | (offsets[k] & ((1u << kLowBits) - 1));
        return at;
    }

    struct Block {
        List list;
        std::array<std::uint8_t, kSlotsPerBox> slots;
    };
    std::vector<Block> blocks_;
};

}  // namespace ColorUtilities
