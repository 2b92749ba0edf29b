#include "gif_import/DecoderCache.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "host/LibraryData.h"
#include "host/MArgumentManager.h"

namespace GifImport {

int clearCache(mint argc, MArgument *args, MArgument result) {
    if (OstrelUtils::libraryData() == nullptr || argc < 1) return MalformedArguments;
    static constexpr unsigned kFileName[] = {0};
    try {
        OstrelUtils::MArgumentManager arguments(argc, args, result, kFileName);
        arguments.setBoolean(eraseDecoder(arguments.getString(0)));
    } catch (const std::bad_alloc &) {
        // Copying the name is the only thing that can fail here.
        return MalformedArguments;
    }
    return Success;
}

void clearAllDecoders() { destroyAllDecoders(); }

}  // namespace GifImport
