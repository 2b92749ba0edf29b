#include "gif_import/DecodeBudget.h"

#include "gif_import/DecoderCache.h"
#include "host/MemoryBudget.h"

namespace GifImport {

std::uint64_t decodeBudget() {
    std::uint64_t bytes = 0;
    if (OstrelUtils::budgetFromEnvironment("TARVEX_DECODE_BUDGET", bytes)) return bytes;
    return OstrelUtils::memoryBudget();
}

bool fitsSpareDecodeBudget(std::uint64_t bytes) {
    const std::uint64_t budget = decodeBudget(), held = bytesHeldByDecoders();
    return held <= budget && bytes <= budget - held;
}

bool fitsDecodeBudget(std::uint64_t bytes) {
    return fitsSpareDecodeBudget(bytes) || (dropAllSnapshots() && fitsSpareDecodeBudget(bytes));
}

}  // namespace GifImport
