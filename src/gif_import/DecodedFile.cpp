#include "gif_import/DecodedFile.h"

#include "gif_import/DecoderCache.h"
#include "gif_import/ImportCodes.h"

namespace GifImport {

int ensureDecoded(Decoder *decoder, const std::string &fileName) {
    if (decoder == nullptr) return CannotOpen;
    decoder->ensureLoaded();
    if (!decoder->hasError()) return Success;
    unlinkDecoder(fileName);
    return Undecodable;
}

}  // namespace GifImport
