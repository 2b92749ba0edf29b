#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "color/Palette.h"

namespace ColorUtilities {

// Remembers the answers of a nearest-colour search by the exact bytes of the
// colour asked for. Neighbouring pixels repeat colours often, and a search's
// answer depends on nothing but those bytes, so a remembered answer is the
// search's own. Direct-mapped: a colour displaces whatever shared its slot.
template <typename T, int N>
class NearestColorMemo {
public:
    NearestColorMemo() : slots_(kSlots) {}

    // True with the remembered answer in *index, if any.
    bool recall(const Color<T, N> &color, std::uint32_t *index) const {
        const Slot &slot = slots_[slotOf(color)];
        if (slot.index == kUnknownIndex || std::memcmp(&slot.key, &color.values, sizeof slot.key) != 0)
            return false;
        *index = slot.index;
        return true;
    }

    void remember(const Color<T, N> &color, std::uint32_t index) {
        Slot &slot = slots_[slotOf(color)];
        slot.key = color.values;
        slot.index = index;
    }

private:
    static constexpr int kSlotBits = 16;
    static constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;

    struct Slot {
        std::array<T, N + 1> key{};
        std::uint32_t index = kUnknownIndex;
    };

    static std::size_t slotOf(const Color<T, N> &color) {
        unsigned char bytes[sizeof color.values];
        std::memcpy(bytes, &color.values, sizeof bytes);
        std::uint64_t hash = 0xcbf29ce484222325ULL;
        for (unsigned char b : bytes) hash = (hash ^ b) * 0x100000001b3ULL;
        return static_cast<std::size_t>((hash * 0x9E3779B97F4A7C15ULL) >> (64 - kSlotBits));
    }

    std::vector<Slot> slots_;
};

}  // namespace ColorUtilities
