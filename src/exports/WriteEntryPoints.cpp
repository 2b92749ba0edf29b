#include "exports/ExportCatchTable.h"
#include "gif_export/WriteWorkers.h"
#include "host/CallFrame.h"

using GifExport::ExportCatchTable;
using OstrelUtils::runInCallFrame;

namespace {
// File name, comments and dithering method.
constexpr unsigned kWriteFramesStrings[] = {1, 2, 4};
constexpr unsigned kWriteColormapsStrings[] = {2, 3, 5};
}  // namespace

extern "C" {

// A wrong argument count is refused before anything is read or created.
QUORBEL_EXPORT int WriteFrames(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    if (argc != GifExport::kWriteFramesArgumentCount) return QUORBEL_FUNCTION_ERROR;
    return runInCallFrame<ExportCatchTable>(argc, args, result, kWriteFramesStrings,
                                            GifExport::writeFrames);
}

QUORBEL_EXPORT int WriteColormaps(QuorbelLibraryData, mint argc, MArgument *args,
                                  MArgument result) {
    if (argc != GifExport::kWriteColormapsArgumentCount) return QUORBEL_FUNCTION_ERROR;
    return runInCallFrame<ExportCatchTable>(argc, args, result, kWriteColormapsStrings,
                                            GifExport::writeColormaps);
}

}  // extern "C"
