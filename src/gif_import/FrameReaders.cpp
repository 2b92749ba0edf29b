#include "gif_import/DecodeBudget.h"
#include "gif_import/DecodedFile.h"
#include "gif_import/DecoderCache.h"
#include "gif_import/FrameImage.h"
#include "gif_import/ImportCodes.h"
#include "gif_import/ImportExports.h"
#include "gif_import/NamedFileReader.h"

#include <algorithm>
#include <optional>

namespace GifImport {
namespace {

int channelsForAll(const Decoder &decoder) {
    const bool alpha = std::any_of(decoder.frames.begin(), decoder.frames.end(), [&](const auto &f) {
        return f->needsAlpha(decoder.canvasPixelCount);
    });
    return alpha ? 4 : 3;
}

// The result image and, the first time, the compositor's canvas and restore
// buffer count in the same budget as the decoded files. A file whose
// pictures do not fit reads as undecodable and is dropped, as one whose
// rasters do not fit.
int reserveForPictures(Decoder &decoder, const std::string &fileName, std::uint64_t slices,
                       int channels) {
    const std::uint64_t pixels = decoder.canvasPixelCount;
    const std::uint64_t canvas =
        decoder.compositor.hasCanvas() ? 0 : (pixels + decoder.restorePreviousPixels) * sizeof(PackedColor);
    if (fitsDecodeBudget(slices * pixels * static_cast<std::uint64_t>(channels) + canvas))
        return Success;
    eraseDecoder(fileName);
    return Undecodable;
}

int oneFrame(OstrelUtils::MArgumentManager &arguments, const std::string &fileName) {
    // Loaded before the frame number is checked, so a bad number still leaves
    // the file in the cache.
    Decoder *decoder = getOrLoad(fileName);
    // Compared before counting from zero: the smallest number has no predecessor.
    const mint frameNumber = arguments.getInteger(1);
    if (frameNumber < 1) return NoFrames;
    const auto index = static_cast<std::uint64_t>(frameNumber) - 1;
    if (int code = ensureDecoded(decoder, fileName); code != Success) return code;
    if (index >= decoder->frames.size()) return NoFrames;

    const int channels = decoder->frames[static_cast<std::size_t>(index)]->channels(decoder->canvasPixelCount);
    if (int code = reserveForPictures(*decoder, fileName, 1, channels); code != Success) return code;
    std::optional<FrameImage> image;
    if (int code = createFrameImage(image, 0, decoder->canvasWidth, decoder->canvasHeight, channels);
        code != 0)
        return code;
    copyPicture(*image, 0, decoder->compositor.picture(*decoder, static_cast<std::size_t>(index)));
    if (index + 1 == decoder->frames.size()) decoder->compositor.release();
    arguments.setImage(*image);
    return Success;
}

int allFrames(OstrelUtils::MArgumentManager &arguments, const std::string &fileName) {
    Decoder *decoder = nullptr;
    if (int code = decodedWithFrames(fileName, decoder); code != Success) return code;
    const std::size_t count = decoder->frames.size();

    const int channels = channelsForAll(*decoder);
    if (int code = reserveForPictures(*decoder, fileName, count, channels); code != Success) return code;
    std::optional<FrameImage> image;
    const mint slices = count > 1 ? static_cast<mint>(count) : 0;
    if (int code = createFrameImage(image, slices, decoder->canvasWidth, decoder->canvasHeight, channels);
        code != 0)
        return code;
    for (std::size_t i = 0; i < count; ++i) copyPicture(*image, i, decoder->compositor.picture(*decoder, i));
    decoder->compositor.release();
    arguments.setImage(*image);
    return Success;
}

}  // namespace

int readOneFrame(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, result, 2, oneFrame);
}

int readAllFrames(mint argc, MArgument *args, MArgument result) {
    return readNamedFile(argc, args, result, 1, allFrames);
}

}  // namespace GifImport
