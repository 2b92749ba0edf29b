#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace GifExport {

// A multiset of pixel counts, asked with ever larger values: how many are at
// most t, and which is the next above t. Most counts are small, so those are
// tallied in place and only the rare large ones are sorted.
class ValueCounts {
public:
    static constexpr std::uint32_t kDense = 4096;

    void add(std::uint32_t value) {
        if (value < kDense)
            ++dense_[value];
        else
            large_.push_back(value);
    }
    void seal() { std::sort(large_.begin(), large_.end()); }

    // Non-decreasing t from one call to the next.
    std::uint64_t countAtMost(std::uint32_t t) {
        for (; denseCursor_ < kDense && denseCursor_ <= t; ++denseCursor_) counted_ += dense_[denseCursor_];
        for (; largeCursor_ < large_.size() && large_[largeCursor_] <= t; ++largeCursor_) ++counted_;
        return counted_;
    }

    // The smallest value above t; t non-decreasing from one call to the next.
    std::optional<std::uint32_t> nextAbove(std::uint32_t t) {
        if (t + 1 < kDense) {
            for (std::uint32_t v = std::max(t + 1, scanFrom_); v < kDense; ++v)
                if (dense_[v] != 0) {
                    scanFrom_ = v;
                    return v;
                }
            scanFrom_ = kDense;
        }
        const auto above = std::upper_bound(large_.begin() + long(largeSearch_), large_.end(), t);
        largeSearch_ = std::size_t(above - large_.begin());
        if (above == large_.end()) return std::nullopt;
        return *above;
    }

private:
    std::vector<std::uint32_t> dense_ = std::vector<std::uint32_t>(kDense, 0);
    std::vector<std::uint32_t> large_;
    std::uint32_t denseCursor_ = 0;
    std::size_t largeCursor_ = 0;
    std::uint64_t counted_ = 0;
    std::uint32_t scanFrom_ = 0;
    std::size_t largeSearch_ = 0;
};

}  // namespace GifExport
