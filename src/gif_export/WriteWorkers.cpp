#include "gif_export/WriteWorkers.h"

#include <cstdint>
#include <stdexcept>
#include <string>

#include "gif_export/Encoder.h"
#include "gif_export/ExportError.h"
#include "gif_export/ExportParameters.h"
#include "host/ImageGeometry.h"
#include "host/LibraryData.h"
#include "host/OstrelError.h"
#include "host/TensorView.h"

namespace GifExport {
namespace {

using OstrelUtils::MArgumentManager;
using OstrelUtils::TensorView;

constexpr mint kMaxSide = 65535;

// The kernel copies the result string, but only after the call returns.
void answerFileName(MArgumentManager &arguments, const std::string &fileName) {
    static std::string lastWritten;
    lastWritten = fileName;
    arguments.setString(lastWritten.c_str());
}

void require(bool condition, const char *failure) {
    if (!condition) throw std::runtime_error(failure);
}

bool validSide(mint side) { return side >= 1 && side <= kMaxSide; }

struct ImageFacts {
    mint height, width, channels, slices;
    MImage_Data_Type type;
    MImage_CS_Type colorSpace;
    bool interleaved;
    const std::uint8_t *samples;
};

ImageFacts readImage(MImage image) {
    QuorbelImageFunctions images = OstrelUtils::libraryData()->imageFunctions;
    if (images == nullptr) throw OstrelUtils::OstrelError(OstrelUtils::ImageInitError);
    if (image == nullptr) throw std::runtime_error("Missing image argument");
    return {images->getRowCount(image),    images->getColumnCount(image),
            images->getChannels(image),    images->getSliceCount(image),
            images->getDataType(image),    images->getColorSpace(image),
            images->interleavedQ(image) != 0,
            static_cast<const std::uint8_t *>(images->getRawData(image))};
}

void checkImage(const ImageFacts &image) {
    require(image.channels == 1 || image.channels == 3, "Invalid number of channels");
    require(image.type == MImage_Type_Bit8, "Invalid image type");
    require(validSide(image.height) && validSide(image.width), "Invalid image dimensions");
    require(static_cast<std::uint32_t>(image.colorSpace) <= MImage_CS_RGB,
            "Invalid image color space");
    require(image.slices >= 1, "Invalid number of frames");
    OstrelUtils::requireInterleaved(image.interleaved, image.channels);
}

// The arguments both writers share, from the file name on; `first` is the
// position of the file name.
void readCommonArguments(MArgumentManager &arguments, unsigned first, Encoder &encoder) {
    encoder.open(arguments.getString(first));
    encoder.addComments(arguments.getString(first + 1));
    setDurations(encoder, TensorView(arguments.getTensor(first + 2)));
    setDitherMethod(encoder, arguments.getString(first + 3));
    setLoopCount(encoder, arguments.getInteger(first + 4));
    encoder.setInterlace(arguments.getBoolean(first + 5));
    setBackground(encoder, TensorView(arguments.getTensor(first + 6)));
    setTransparency(encoder, TensorView(arguments.getTensor(first + 7)));
    setDisposals(encoder, TensorView(arguments.getTensor(first + 8)));
}

void finish(MArgumentManager &arguments, unsigned fileNameArgument, Encoder &encoder) {
    encoder.resolveBackground();
    encoder.resolveTransparency();
    if (const signed char status = encoder.write(); status != 0) throw ExportError(status);
    answerFileName(arguments, arguments.getString(fileNameArgument));
}

}  // namespace

void writeFrames(MArgumentManager &arguments) {
    const ImageFacts image = readImage(arguments.getImageHandle(0));
    checkImage(image);
    Encoder encoder;
    encoder.setSize(static_cast<std::uint32_t>(image.slices), static_cast<std::uint32_t>(image.height),
                    static_cast<std::uint32_t>(image.width));
    encoder.setChannels(static_cast<int>(image.channels));
    readCommonArguments(arguments, 1, encoder);
    encoder.buildColorMaps(image.samples);
    finish(arguments, 1, encoder);
}

void writeColormaps(MArgumentManager &arguments) {
    const auto indices = arguments.getRawArray<unsigned char>(1);
    const mint rank = indices.rank();
    if (rank != 2 && rank != 3) throw std::runtime_error("Invalid rank of RawData parameter");
    const mint height = indices.dimension(rank - 2), width = indices.dimension(rank - 1);
    require(validSide(height) && validSide(width), "Invalid image dimensions");
    const mint frames = rank == 2 ? 1 : indices.dimension(0);
    Encoder encoder;
    encoder.setSize(static_cast<std::uint32_t>(frames), static_cast<std::uint32_t>(height),
                    static_cast<std::uint32_t>(width));
    const std::uint8_t *data = indices.data();
    for (std::size_t k = 0; k < encoder.frames().size(); ++k)
        encoder.frames()[k].externalPixels = data + k * std::size_t(height) * std::size_t(width);
    encoder.setChannels(3);
    readCommonArguments(arguments, 2, encoder);
    setColorMaps(encoder, arguments.getRawArray<unsigned char>(0));
    finish(arguments, 2, encoder);
}

}  // namespace GifExport
