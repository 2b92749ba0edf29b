#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace ColorUtilities {

// A fixed-size array of trivial values, all zero at first. Its pages come
// zero-filled from the system and cost no memory until written, so large
// tables that a call touches sparsely stay cheap.
template <typename V>
class ZeroedArray {
    static_assert(std::is_trivial_v<V>);

public:
    ZeroedArray() = default;
    explicit ZeroedArray(std::size_t count)
        : values_(static_cast<V *>(std::calloc(count, sizeof(V)))), count_(count) {
        if (values_ == nullptr && count > 0) throw std::bad_alloc();
    }

    V &operator[](std::size_t i) noexcept { return values_[i]; }
    const V &operator[](std::size_t i) const noexcept { return values_[i]; }
    std::size_t size() const noexcept { return count_; }
    V *begin() noexcept { return values_.get(); }
    V *end() noexcept { return values_.get() + count_; }

private:
    struct FreeDeleter {
        void operator()(V *p) const noexcept { std::free(p); }
    };

    std::unique_ptr<V[], FreeDeleter> values_;
    std::size_t count_ = 0;
};

}  // namespace ColorUtilities
