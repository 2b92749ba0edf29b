#include "gif_import/DecodedFile.h"
#include "gif_import/DecoderCache.h"
#include "gif_import/FrameImage.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "gif_import/NamedFileReader.h"

#include <algorithm>

namespace GifImport {
namespace {

int channelsForAll(const Decoder &decoder) {
    const bool alpha = std::any_of(decoder.frames.begin(), decoder.frames.end(), [&](const auto &f) {
        return f->needsAlpha(decoder.canvasPixelCount);
    });
    return alpha ? 4 : 3;
}

int oneFrame(QuorbelLibraryData library, const std::string &fileName, mint frameNumber,
             MArgument result) {
    // Loaded before the frame number is checked, so a bad number still leaves
    // the file in the cache.
    Decoder *decoder = getOrLoad(fileName);
    const mint index = frameNumber - 1;
    if (index < 0) return NoFrames;
    if (int code = ensureDecoded(decoder, fileName); code != Success) return code;
    if (static_cast<std::uint64_t>(index) >= decoder->frames.size()) return NoFrames;

    const Frame &frame = *decoder->frames[static_cast<std::size_t>(index)];
    FrameImage image(library->imageFunctions);
    if (int code = image.create(0, decoder->canvasWidth, decoder->canvasHeight,
                                frame.channels(decoder->canvasPixelCount));
        code != 0)
        return code;
    image.setSlice(0, frame.picture);
    image.passToResult(result);
    return Success;
}

int allFrames(QuorbelLibraryData library, const std::string &fileName, MArgument result) {
    Decoder *decoder = nullptr;
    if (int code = decodedWithFrames(fileName, decoder); code != Success) return code;
    const std::size_t count = decoder->frames.size();

    FrameImage image(library->imageFunctions);
    const mint slices = count > 1 ? static_cast<mint>(count) : 0;
    if (int code = image.create(slices, decoder->canvasWidth, decoder->canvasHeight,
                                channelsForAll(*decoder));
        code != 0)
        return code;
    for (std::size_t i = 0; i < count; ++i) image.setSlice(i, decoder->frames[i]->picture);
    image.passToResult(result);
    return Success;
}

}  // namespace

int readOneFrame(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, 2, [&](QuorbelLibraryData library, const std::string &fileName) {
        return oneFrame(library, fileName, MArgument_getInteger(args[1]), result);
    });
}

int readAllFrames(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, 1, [&](QuorbelLibraryData library, const std::string &fileName) {
        return allFrames(library, fileName, result);
    });
}

}  // namespace GifImport
