#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quant {

// A set of keys that only answers whether a key is new: open addressing with
// linear probing, doubled at half load. Key is trivially copyable and
// equality-comparable; Hash gives 64 well-mixed bits.
template <typename Key, typename Hash>
class DistinctKeys {
public:
    DistinctKeys() { rehash(1024); }

    // True when the key was not in the set; adds it.
    bool insert(const Key &key) {
        std::size_t slot = Hash{}(key) & mask_;
        while (used_[slot]) {
            if (keys_[slot] == key) return false;
            slot = (slot + 1) & mask_;
        }
        used_[slot] = 1;
        keys_[slot] = key;
        if (++size_ * 2 > keys_.size()) rehash(keys_.size() * 2);
        return true;
    }

    std::size_t size() const noexcept { return size_; }

private:
    void rehash(std::size_t capacity) {
        std::vector<Key> oldKeys(capacity);
        std::vector<std::uint8_t> oldUsed(capacity, 0);
        oldKeys.swap(keys_);
        oldUsed.swap(used_);
        mask_ = capacity - 1;
        for (std::size_t i = 0; i < oldKeys.size(); ++i) {
            if (!oldUsed[i]) continue;
            std::size_t slot = Hash{}(oldKeys[i]) & mask_;
            while (used_[slot]) slot = (slot + 1) & mask_;
            used_[slot] = 1;
            keys_[slot] = oldKeys[i];
        }
    }

    std::vector<Key> keys_;
    std::vector<std::uint8_t> used_;
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
