#include "gif_export/WriteWorkers.h"

#include <stdexcept>

namespace GifExport {

// The GIF writer is not built yet; the exports already answer with the code
// that an unexpected failure of a writer gets.
void writeFrames(OstrelUtils::MArgumentManager &) {
    throw std::logic_error("WriteFrames is not available yet");
}

void writeColormaps(OstrelUtils::MArgumentManager &) {
    throw std::logic_error("WriteColormaps is not available yet");
}

}  // namespace GifExport
