// What the callback table is made of: one part per kind of host object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

#include <sys/mman.h>

#include "Books.h"
#include "quorbel/QuorbelLibrary.h"

namespace refhost {

const st_QuorbelImageFunctions &imageFunctions();
const st_QuorbelRawArrayFunctions &rawArrayFunctions();
// Fills the tensor members of a library-data table.
void addTensorFunctions(st_QuorbelLibraryData &table);

long liveImageCount();
long liveRawArrayCount();
long liveTensorCount();

// A malloc'd copy of `text` that a plug-in must give back once.
char *issueString(const char *text);
void releaseString(char *text);
void postMessage(const char *text);

// The product of `factors`, or nothing when it overflows.
inline std::optional<std::size_t> checkedProduct(std::initializer_list<std::size_t> factors) {
    std::size_t product = 1;
    for (std::size_t factor : factors)
        if (__builtin_mul_overflow(product, factor, &product)) return std::nullopt;
    return product;
}

// The buffer of an image or raw array, as the table hands it out.
inline constexpr auto dataOf = [](const auto &object) { return static_cast<void *>(object.data.get()); };

inline constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;

// Asks for huge pages over the whole 2 MB blocks inside the buffer; a kernel
// without them ignores the advice.
inline void offerHugePages(std::byte *start, std::size_t bytes) {
    const auto first = (reinterpret_cast<std::uintptr_t>(start) + kHugePageBytes - 1) & ~(kHugePageBytes - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(start) + bytes) & ~(kHugePageBytes - 1);
#ifdef MADV_HUGEPAGE
    if (end > first) madvise(reinterpret_cast<void *>(first), end - first, MADV_HUGEPAGE);
#endif
}

struct FreeBytes {
    void operator()(std::byte *bytes) const { std::free(bytes); }
};
using SampleBuffer = std::unique_ptr<std::byte[], FreeBytes>;

// Zero-filled through calloc: large buffers then come as fresh pages that are
// zero already, and are not written twice before the plug-in fills them.
// Those are offered huge pages too, since a plug-in writes every page of what
// it asks for, and a fault per 4 KB costs more than filling the page.
inline SampleBuffer zeroedBuffer(std::size_t bytes) {
    SampleBuffer buffer(static_cast<std::byte *>(std::calloc(bytes > 0 ? bytes : 1, 1)));
    if (buffer != nullptr && bytes >= kHugePageBytes) offerHugePages(buffer.get(), bytes);
    return buffer;
}

// A copy of `bytes` bytes from `source`, written once.
inline SampleBuffer copiedBuffer(const std::byte *source, std::size_t bytes) {
    SampleBuffer buffer(static_cast<std::byte *>(std::malloc(bytes > 0 ? bytes : 1)));
    if (buffer != nullptr && bytes > 0) std::memcpy(buffer.get(), source, bytes);
    return buffer;
}

// What raw arrays and tensors have in common: dimensions and a zero-filled
// buffer of their product in elements.
struct ArrayBlock {
    std::vector<mint> dimensions;
    mint flattenedLength = 0;
    SampleBuffer data;
};

// Gives `array` its dimensions and buffer, then hands it out; a dimension
// below `smallest` is refused. The caller has checked type and rank.
template <class Object, class Handle>
int addArray(std::unique_ptr<Object> array, mint rank, const mint *dimensions, std::size_t elementSize,
             mint smallest, Handle *result) {
    if (rank > 0 && dimensions == nullptr) return QUORBEL_DIMENSION_ERROR;
    std::size_t bytes = elementSize;
    for (mint i = 0; i < rank; ++i) {
        if (dimensions[i] < smallest) return QUORBEL_DIMENSION_ERROR;
        const auto grown = checkedProduct({bytes, std::size_t(dimensions[i])});
        if (!grown) return QUORBEL_MEMORY_ERROR;
        bytes = *grown;
        array->dimensions.push_back(dimensions[i]);
    }
    array->flattenedLength = static_cast<mint>(bytes / elementSize);
    array->data = zeroedBuffer(bytes);
    if (array->data == nullptr) return QUORBEL_MEMORY_ERROR;
    *result = static_cast<Handle>(const_cast<void *>(registryOf<Object>().add(std::move(array))));
    return QUORBEL_NO_ERROR;
}

// The shape queries of one kind of array; an unknown handle answers neutrally.
template <class Object, class Handle>
struct BlockQueries {
    static mint rank(Handle handle) {
        return registryOf<Object>().query(handle, mint{0},
                                          [](const ArrayBlock &b) { return static_cast<mint>(b.dimensions.size()); });
    }
    static const mint *dimensions(Handle handle) {
        return registryOf<Object>().query(handle, static_cast<const mint *>(nullptr),
                                          [](const ArrayBlock &b) { return b.dimensions.data(); });
    }
    static mint flattenedLength(Handle handle) {
        return registryOf<Object>().query(handle, mint{0}, [](const ArrayBlock &b) { return b.flattenedLength; });
    }
};

}  // namespace refhost
