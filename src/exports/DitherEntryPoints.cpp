#include "dither/DitherImage.h"
#include "host/CallFrame.h"

extern "C" {

QUORBEL_EXPORT int DitherImage(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return OstrelUtils::runInCallFrame<OstrelUtils::DitherCatchTable>(argc, args, result,
                                                                     ColorUtilities::ditherImage);
}

}  // extern "C"
