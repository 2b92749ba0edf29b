#pragma once

#include <cstdint>

namespace OstrelUtils {

// The bytes one call may take for its tables: the count given by the
// environment variable TARVEX_MEMORY_BUDGET when it is set, else half of the
// machine's physical memory. Read on every call, so that a process can lower
// it between calls.
std::uint64_t memoryBudget();

// The count in the environment variable `name`, when it holds a plain
// non-negative decimal number.
bool budgetFromEnvironment(const char *name, std::uint64_t &bytes);

// Refuses, as an allocation failure, a table that would not fit in the
// budget: allocating it would take the machine down before failing.
void requireTableBytes(std::uint64_t bytes);

// elements x elementBytes, saturated instead of wrapping.
std::uint64_t saturatedProduct(std::uint64_t elements, std::uint64_t elementBytes);

}  // namespace OstrelUtils
