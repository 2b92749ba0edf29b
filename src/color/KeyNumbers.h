#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quant {

// Numbers keys 0, 1, 2, ... in the order they are first seen: open
// addressing with linear probing, doubled at half load. Key is trivially
// copyable and equality-comparable; Hash gives 64 well-mixed bits.
template <typename Key, typename Hash>
class KeyNumbers {
public:
    KeyNumbers() { rehash(1024); }

    // The key's number; `fresh` tells whether it was given just now.
    std::uint32_t numberOf(const Key &key, bool &fresh) {
        std::size_t slot = Hash{}(key) & mask_;
        while (numbers_[slot] != kFree) {
            if (keys_[slot] == key) {
                fresh = false;
                return numbers_[slot];
            }
            slot = (slot + 1) & mask_;
        }
        fresh = true;
        const auto number = static_cast<std::uint32_t>(size_++);
        numbers_[slot] = number;
        keys_[slot] = key;
        if (size_ * 2 > keys_.size()) rehash(keys_.size() * 2);
        return number;
    }

    // True when the key was not numbered before.
    bool insert(const Key &key) {
        bool fresh = false;
        numberOf(key, fresh);
        return fresh;
    }

    std::size_t size() const noexcept { return size_; }

private:
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;

    void rehash(std::size_t capacity) {
        std::vector<Key> oldKeys(capacity);
        std::vector<std::uint32_t> oldNumbers(capacity, kFree);
        oldKeys.swap(keys_);
        oldNumbers.swap(numbers_);
        mask_ = capacity - 1;
        for (std::size_t i = 0; i < oldKeys.size(); ++i) {
            if (oldNumbers[i] == kFree) continue;
            std::size_t slot = Hash{}(oldKeys[i]) & mask_;
            while (numbers_[slot] != kFree) slot = (slot + 1) & mask_;
            numbers_[slot] = oldNumbers[i];
            keys_[slot] = oldKeys[i];
        }
    }

    std::vector<Key> keys_;
    std::vector<std::uint32_t> numbers_;
    std::size_t mask_ = 0;
    std::size_t size_ = 0;
};

// Mixes 64 bits so that the low bits depend on all of them.
inline std::uint64_t mix64(std::uint64_t x) {
    x ^= x >> 33;
    x *= 0xff51afd7ed558ccdULL;
    x ^= x >> 33;
    x *= 0xc4ceb9fe1a85ec53ULL;
    x ^= x >> 33;
    return x;
}

}  // namespace Quant
