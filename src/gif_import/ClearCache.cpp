#include "gif_import/DecoderCache.h"
#include "gif_import/HostString.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "host/LibraryData.h"

namespace GifImport {

int clearCache(mint argc, MArgument *args, MArgument result) {
    QuorbelLibraryData library = OstrelUtils::libraryData();
    if (library == nullptr || argc < 1) return MalformedArguments;
    HostString fileName(library, args[0]);
    try {
        const bool erased = eraseDecoder(fileName.bytes());
        MArgument_setBoolean(result, erased ? QUORBEL_TRUE : QUORBEL_FALSE);
    } catch (const std::bad_alloc &) {
        // Copying the name is the only thing that can fail here.
        return MalformedArguments;
    }
    return Success;
}

void clearAllDecoders() { destroyAllDecoders(); }

}  // namespace GifImport
