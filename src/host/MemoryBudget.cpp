#include "host/MemoryBudget.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

#include <unistd.h>

namespace OstrelUtils {
namespace {

std::uint64_t halfOfPhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return std::uint64_t{4} << 30;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) / 2;
}

}  // namespace

bool budgetFromEnvironment(const char *name, std::uint64_t &bytes) {
    const char *text = std::getenv(name);
    if (text == nullptr || *text == '\0' || *text == '-') return false;
    char *end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text, &end, 10);
    if (errno != 0 || *end != '\0') return false;
    bytes = value;
    return true;
}

std::uint64_t memoryBudget() {
    std::uint64_t bytes = 0;
    if (budgetFromEnvironment("TARVEX_MEMORY_BUDGET", bytes)) return bytes;
    static const std::uint64_t machine = halfOfPhysicalMemory();
    return machine;
}

void requireTableBytes(std::uint64_t bytes) {
    if (bytes > memoryBudget()) throw std::bad_alloc();
}

std::uint64_t saturatedProduct(std::uint64_t elements, std::uint64_t elementBytes) {
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
    if (elementBytes != 0 && elements > kMax / elementBytes) return kMax;
    return elements * elementBytes;
}

}  // namespace OstrelUtils
