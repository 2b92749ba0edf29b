#include "color/QuantizeWorkers.h"
#include "exports/DitherCatchTable.h"
#include "exports/QuantizeCatchTable.h"
#include "host/CallFrame.h"

using OstrelUtils::DitherCatchTable;
using OstrelUtils::QuantizeCatchTable;
using OstrelUtils::runInCallFrame;

namespace {
// ImageQuantize(image, colorCount, ditherMethod, paletteOnly, method, bits) and
// GetQuantizedImage(image, colorCount, ditherMethod, method, bits)
constexpr unsigned kQuantizeStringArguments[] = {2};
}  // namespace

extern "C" {

QUORBEL_EXPORT int ImageQuantize(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return runInCallFrame<QuantizeCatchTable>(argc, args, result, kQuantizeStringArguments,
                                              Quant::imageQuantize);
}

QUORBEL_EXPORT int GetQuantizedImage(QuorbelLibraryData, mint argc, MArgument *args,
                                     MArgument result) {
    return runInCallFrame<QuantizeCatchTable>(argc, args, result, kQuantizeStringArguments,
                                              Quant::getQuantizedImage);
}

// Counting shares the dithering export's table: runtime errors -14, others -10.
QUORBEL_EXPORT int UniqueColors(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return runInCallFrame<DitherCatchTable>(argc, args, result, {}, Quant::uniqueColors);
}

}  // extern "C"
