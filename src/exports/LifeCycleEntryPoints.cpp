#include "gif_import/ImportExports.h"
#include "host/LibraryData.h"
#include "host/ListSeparator.h"
#include "quorbel/QuorbelLibrary.h"

extern "C" {

QUORBEL_EXPORT int QuorbelLibrary_initialize(QuorbelLibraryData libData) {
    OstrelUtils::setLibraryData(libData);
    return 0;
}

// The table stays as it was: only the cached files go.
QUORBEL_EXPORT void QuorbelLibrary_uninitialize(QuorbelLibraryData) {
    GifImport::clearAllDecoders();
}

// The kernel copies the string; it points at the library's own constant.
QUORBEL_EXPORT int StringSeparator(QuorbelLibraryData, mint, MArgument *, MArgument result) {
    MArgument_setUTF8String(result, const_cast<char *>(OstrelUtils::kListSeparator.data()));
    return 0;
}

}  // extern "C"
