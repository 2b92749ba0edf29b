#include "gif_export/ExportCatchTable.h"
#include "gif_export/WriteWorkers.h"
#include "host/CallFrame.h"

using GifExport::ExportCatchTable;
using OstrelUtils::runInCallFrame;

extern "C" {

// A wrong argument count is refused before anything is read or created.
QUORBEL_EXPORT int WriteFrames(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    if (argc != GifExport::kWriteFramesArgumentCount) return QUORBEL_FUNCTION_ERROR;
    return runInCallFrame<ExportCatchTable>(argc, args, result, GifExport::writeFrames);
}

QUORBEL_EXPORT int WriteColormaps(QuorbelLibraryData, mint argc, MArgument *args,
                                  MArgument result) {
    if (argc != GifExport::kWriteColormapsArgumentCount) return QUORBEL_FUNCTION_ERROR;
    return runInCallFrame<ExportCatchTable>(argc, args, result, GifExport::writeColormaps);
}

}  // extern "C"
