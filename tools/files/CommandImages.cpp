#include "CommandImages.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "Command.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "ImageOutput.h"
#include "refhost/refhost.h"

namespace tarvex_cli {

std::optional<RawImageLayout> layoutOption(const std::string &command, const std::optional<std::string> &text) {
    if (!text) return std::nullopt;
    try {
        return parseRawImageLayout(*text);
    } catch (const std::invalid_argument &error) {
        throw usageError(command + ": --layout: " + error.what());
    }
}

MImage readCommandImage(const ImageLocation &location) {
    return location.layout ? readRawImage(location.path, *location.layout) : readImageFile(location.path);
}

void checkOutputName(const std::string &command, const ImageLocation &location) {
    if (!location.layout) {
        imageFormatFor(command, location.path);
        return;
    }
    // Raw samples in a file called .png or .gif would pass for a picture.
    const std::string extension = lowerCaseExtension(location.path);
    if (extension == ".png" || extension == ".gif" || outputPath(location.path) != location.path)
        throw usageError(command + ": with --layout the output is raw samples, not a picture; name it other than " +
                         location.path + " (out.raw)");
}

void writeCommandImage(MImage image, const ImageLocation &location) {
    if (!location.layout) return writeImage(image, location.path);
    writeRawImage(image, location.path);
    std::printf("%s\n", formatRawImageLayout(layoutOf(image)).c_str());
}

MImage withAlphaAsChannel(MImage image) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    if (!images->alphaChannelQ(image)) return nullptr;
    const mint slices = images->getRank(image) == 3 ? images->getSliceCount(image) : 0;
    MImage copy = nullptr;
    if (rh_image_new(slices, images->getColumnCount(image), images->getRowCount(image), images->getChannels(image),
                     images->getDataType(image), MImage_CS_Automatic, images->interleavedQ(image), QUORBEL_FALSE,
                     &copy) != 0)
        throw CliError("the host cannot make a copy of the image");
    std::memcpy(images->getRawData(copy), images->getRawData(image), rawImageByteCount(layoutOf(image)));
    return copy;
}

}  // namespace tarvex_cli
