#include "gif_export/Encoder.h"

#include <array>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "gif_export/ColorReducer.h"
#include "gif_export/ExportError.h"
#include "gif_export/InterlaceOrder.h"
#include "host/ListSeparator.h"
#include "host/Utf8Path.h"


namespace GifExport {
namespace {

constexpr int kColorResolution = 8;
constexpr GifColorType kWhite{255, 255, 255};
constexpr GifColorType kBlack{0, 0, 0};

int writeToStream(GifFileType *gif, const GifByteType *bytes, int length) {
    return static_cast<int>(
        std::fwrite(bytes, 1, static_cast<std::size_t>(length), static_cast<std::FILE *>(gif->UserData)));
}

void check(int giflibResult, const std::string &failure) {
    if (giflibResult == GIF_ERROR) throw std::runtime_error(failure);
}

}  // namespace

Encoder::~Encoder() = default;

void Encoder::setSize(std::uint32_t frames, std::uint32_t height, std::uint32_t width) {
    frames_.resize(frames);
    frameCount_ = frames;
    height_ = height;
    width_ = width;
    for (ExportFrame &frame : frames_) {
        frame.height = height;
        frame.width = width;
    }
}

void Encoder::open(const std::string &fileName) {
    stream_.reset(OstrelUtils::openUtf8Path(fileName, "wb"));
    if (!stream_) throw std::runtime_error("Cannot open file for encoder");
}

void Encoder::addComments(std::string_view joined) {
    const std::string_view separator = OstrelUtils::kListSeparator;
    for (std::size_t start = 0; start <= joined.size();) {
        std::size_t end = joined.find(separator, start);
        if (end == std::string_view::npos) end = joined.size();
        if (end > start) comments_.emplace_back(joined.substr(start, end - start));
        start = end + separator.size();
    }
}

void Encoder::setGlobalMap(ColorMapOwner map) {
    globalMap_ = map.get();
    ownedGlobalMap_ = std::move(map);
    useGlobalMap_ = true;
}

void Encoder::buildColorMaps(const std::uint8_t *samples) {
    if (channels_ == 1)
        buildGreyMap(samples);
    else
        buildRgbMaps(samples);
}

// One global map when neighbouring frames agree on their maps, else each
// frame writes its own.
void Encoder::buildRgbMaps(const std::uint8_t *samples) {
    const std::size_t frameSize = std::size_t(height_) * width_;
    ReduceSettings settings;
    settings.dither = dither_;
    for (std::size_t k = 0; k < frames_.size(); ++k) {
        ExportFrame &frame = frames_[k];
        frame.pixels.resize(frameSize);
        frame.ownMap(reduceColors(samples + k * frameSize * 3, height_, width_,
                                  frame.pixels.data(), settings));
    }
    useGlobalMap_ = true;
    for (std::size_t k = 1; k < frames_.size(); ++k)
        if (!sameColorMap(frames_[k - 1].localMap, frames_[k].localMap)) useGlobalMap_ = false;
    if (useGlobalMap_ && !frames_.empty()) globalMap_ = frames_[0].localMap;
}

// The grey levels used anywhere in the file, in increasing order, make one
// map that every frame shares.
void Encoder::buildGreyMap(const std::uint8_t *samples) {
    const std::size_t frameSize = std::size_t(height_) * width_;
    const std::size_t total = frameSize * frames_.size();
    std::array<bool, 256> used{};
    for (std::size_t i = 0; i < total; ++i) used[samples[i]] = true;
    std::array<std::uint8_t, 256> position{};
    std::vector<GifColorType> levels;
    for (int v = 0; v < 256; ++v) {
        if (!used[v]) continue;
        position[v] = static_cast<std::uint8_t>(levels.size());
        const auto level = static_cast<GifByteType>(v);
        levels.push_back(GifColorType{level, level, level});
    }
    ColorMapOwner map = makeColorMap(colorMapSizeFor(levels.size()), levels);
    for (std::size_t k = 0; k < frames_.size(); ++k) {
        ExportFrame &frame = frames_[k];
        const std::uint8_t *slice = samples + k * frameSize;
        frame.pixels.resize(frameSize);
        for (std::size_t i = 0; i < frameSize; ++i) frame.pixels[i] = position[slice[i]];
        frame.localMap = map.get();
    }
    setGlobalMap(std::move(map));
}

void Encoder::resolveBackground() {
    if (!useGlobalMap_) return;
    const GifColorType wanted = background_.value_or(kWhite);
    backgroundIndex_ = findColor(globalMap_, wanted);
    if (backgroundIndex_ < 0 && background_) backgroundIndex_ = findColor(globalMap_, kWhite);
    if (backgroundIndex_ < 0) backgroundIndex_ = findColor(globalMap_, kBlack);
    if (backgroundIndex_ < 0) backgroundIndex_ = 0;
}

// A transparent colour the palette lacks fails the export rather than
// quietly dropping the transparency.
void Encoder::resolveTransparency() {
    for (ExportFrame &frame : frames_) {
        if (frame.transparentIndex != kTransparencyToResolve) continue;
        const ColorMapObject *map = useGlobalMap_ ? globalMap_ : frame.localMap;
        if (map == nullptr) {
            frame.transparentIndex = kNoTransparency;
            continue;
        }
        frame.transparentIndex = findColor(map, frame.transparentColor);
        if (frame.transparentIndex < 0) throw ExportError(-13, "Transparent color not in palette");
    }
}

signed char Encoder::write() {
    int giflibError = 0;
    GifFileType *gif = EGifOpen(stream_.get(), writeToStream, &giflibError);
    if (gif == nullptr) return -9;
    signed char status = 0;
    try {
        writeBlocks(gif);
    } catch (const std::runtime_error &) {
        status = -9;
    } catch (...) {
        status = -10;
    }
    if (EGifCloseFile(gif, &giflibError) == GIF_ERROR) status = -9;
    if (status == 0 && std::fflush(stream_.get()) != 0) status = -9;
    return status;
}

void Encoder::writeBlocks(GifFileType *gif) {
    EGifSetGifVersion(gif, true);
    check(EGifPutScreenDesc(gif, static_cast<int>(width_), static_cast<int>(height_),
                            kColorResolution, backgroundIndex_,
                            useGlobalMap_ ? globalMap_ : nullptr),
          "Putting screen descriptor failed");
    if (loopCount_ != 1) writeLoopBlock(gif);
    for (const std::string &comment : comments_)
        check(EGifPutComment(gif, comment.c_str()),
              "Putting comment extension with comment: \"" + comment + "\" failed");
    for (const ExportFrame &frame : frames_) writeFrame(gif, frame);
}

// The file stores repetitions after the first play; one play needs no block.
void Encoder::writeLoopBlock(GifFileType *gif) {
    const std::uint32_t repetitions = loopCount_ == 0 ? 0 : loopCount_ - 1;
    const GifByteType identifier[] = "NETSCAPE2.0";
    const GifByteType value[] = {1, static_cast<GifByteType>(repetitions & 0xFF),
                                 static_cast<GifByteType>((repetitions >> 8) & 0xFF)};
    const std::string failure = "Putting loop extension block failed";
    check(EGifPutExtensionLeader(gif, APPLICATION_EXT_FUNC_CODE), failure);
    check(EGifPutExtensionBlock(gif, 11, identifier), failure);
    check(EGifPutExtensionBlock(gif, 3, value), failure);
    check(EGifPutExtensionTrailer(gif), failure);
}

void Encoder::writeFrame(GifFileType *gif, const ExportFrame &frame) {
    GraphicsControlBlock control{};
    control.DisposalMode = frame.disposal;
    control.UserInputFlag = frame.userInput != 0;
    control.DelayTime = frame.delay;
    control.TransparentColor = frame.transparentIndex;
    GifByteType extension[4];
    const std::size_t length = EGifGCBToExtension(&control, extension);
    check(length == 4 ? GIF_OK : GIF_ERROR, "Putting GCB extension failed");
    check(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension),
          "Putting GCB extension failed");
    check(EGifPutImageDesc(gif, 0, 0, static_cast<int>(frame.width), static_cast<int>(frame.height),
                           interlace_, useGlobalMap_ ? nullptr : frame.localMap),
          "Putting image descriptor failed");
    writeRows(gif, frame);
}

// giflib masks the indices of a line in place, so rows go through a copy:
// the caller's array is never written.
void Encoder::writeRows(GifFileType *gif, const ExportFrame &frame) {
    std::vector<std::uint32_t> order;
    if (interlace_) {
        order = interlacedRowOrder(height_);
    } else {
        order.resize(height_);
        std::iota(order.begin(), order.end(), 0u);
    }
    std::vector<GifPixelType> line(frame.width);
    for (std::uint32_t y : order) {
        bool written = y < frame.height;
        if (written) {
            const std::uint8_t *row = frame.row(y);
            std::copy(row, row + frame.width, line.begin());
            written = EGifPutLine(gif, line.data(), static_cast<int>(frame.width)) != GIF_ERROR;
        }
        if (!written)
            throw std::runtime_error("Putting " + std::to_string(y) + "-th line of frame failed");
    }
}

}  // namespace GifExport
