#include "dither/DitherImage.h"
#include "exports/DitherCatchTable.h"
#include "host/CallFrame.h"

namespace {
// DitherImage(image, colorMap, method, cacheFlag, sortedFlag)
constexpr unsigned kStringArguments[] = {2};
}  // namespace

extern "C" {

QUORBEL_EXPORT int DitherImage(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return OstrelUtils::runInCallFrame<OstrelUtils::DitherCatchTable>(
        argc, args, result, kStringArguments, ColorUtilities::ditherImage);
}

}  // extern "C"
