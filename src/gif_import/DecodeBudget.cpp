#include "gif_import/DecodeBudget.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

#include "gif_import/DecoderCache.h"

namespace GifImport {
namespace {

std::uint64_t halfOfPhysicalMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0) return std::uint64_t{4} << 30;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) / 2;
}

}  // namespace

std::uint64_t decodeBudget() {
    // Read on every decode, so that a process can lower it between files.
    if (const char *text = std::getenv("TARVEX_DECODE_BUDGET"); text != nullptr && *text != '\0') {
        char *end = nullptr;
        errno = 0;
        const unsigned long long bytes = std::strtoull(text, &end, 10);
        if (errno == 0 && *end == '\0' && *text != '-') return bytes;
    }
    static const std::uint64_t machine = halfOfPhysicalMemory();
    return machine;
}

bool fitsDecodeBudget(std::uint64_t bytes) {
    const std::uint64_t budget = decodeBudget(), held = bytesHeldByDecoders();
    return held <= budget && bytes <= budget - held;
}

}  // namespace GifImport
