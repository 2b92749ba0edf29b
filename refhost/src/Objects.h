// What the callback table is made of: one part per kind of host object.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>

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

}  // namespace refhost
