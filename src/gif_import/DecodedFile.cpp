#include "gif_import/DecodedFile.h"

#include "gif_import/DecoderCache.h"
#include "gif_import/ImportCodes.h"

namespace GifImport {

int ensureDecoded(Decoder *decoder, const std::string &fileName) {
    if (decoder == nullptr) return CannotOpen;
    decoder->ensureLoaded();
    if (!decoder->hasError()) return Success;
    eraseDecoder(fileName);
    return Undecodable;
}

int decodedWithFrames(const std::string &fileName, Decoder *&decoder) {
    decoder = getOrLoad(fileName);
    if (int code = ensureDecoded(decoder, fileName); code != Success) return code;
    return decoder->frames.empty() ? NoFrames : Success;
}

}  // namespace GifImport
