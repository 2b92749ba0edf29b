#include "JpegFiles.h"

#include <turbojpeg.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "Command.h"
#include "HostTable.h"
#include "refhost/refhost.h"

namespace tarvex_cli {
namespace {

struct HandleDestroy {
    void operator()(void *handle) const { tjDestroy(handle); }
};
using Handle = std::unique_ptr<void, HandleDestroy>;

std::vector<unsigned char> readWholeFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw CliError("cannot open " + path + ": " + std::strerror(errno));
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Header {
    int width = 0, height = 0;
    bool grey = false;
};

Header readHeader(tjhandle decoder, const std::vector<unsigned char> &bytes, const std::string &path) {
    Header header;
    int subsampling = 0, colorspace = 0;
    if (tjDecompressHeader3(decoder, bytes.data(), bytes.size(), &header.width, &header.height, &subsampling,
                            &colorspace) != 0)
        throw CliError(path + ": not a readable JPEG file: " + tjGetErrorStr2(decoder));
    // The header can end before the frame that gives the size.
    if (header.width < 1 || header.height < 1)
        throw CliError(path + ": not a readable JPEG file: it gives no picture size");
    // libjpeg-turbo turns no four-channel JPEG into RGB; its own message would
    // read like a broken file.
    if (colorspace == TJCS_CMYK || colorspace == TJCS_YCCK)
        throw CliError(path + ": a CMYK JPEG file; the tool reads grey and colour (YCbCr, RGB) JPEG files only");
    header.grey = colorspace == TJCS_GRAY;
    return header;
}

}  // namespace

PictureShape readJpegShape(const std::string &path) {
    const std::vector<unsigned char> bytes = readWholeFile(path);
    Handle decoder(tjInitDecompress());
    if (!decoder) throw CliError(path + ": out of memory");
    const Header header = readHeader(decoder.get(), bytes, path);
    return {header.width, header.height, header.grey ? 1 : 3, 8, false};
}

MImage readJpeg(const std::string &path) {
    std::vector<unsigned char> bytes = readWholeFile(path);
    Handle decoder(tjInitDecompress());
    if (!decoder) throw CliError(path + ": out of memory");
    const auto [width, height, grey] = readHeader(decoder.get(), bytes, path);
    const mint channels = grey ? 1 : 3;
    MImage image = nullptr;
    const int code = rh_image_new(0, width, height, channels, MImage_Type_Bit8, grey ? MImage_CS_Gray : MImage_CS_RGB,
                                  QUORBEL_TRUE, QUORBEL_FALSE, &image);
    if (code != 0) throw CliError(path + ": the host could not make an image (code " + std::to_string(code) + ")");
    auto *pixels = static_cast<unsigned char *>(hostTable()->imageFunctions->getRawData(image));
    // A warning means corrupt data or data that ends early; the decoder then
    // makes up the rest of the picture, which must not pass for the file's.
    if (tjDecompress2(decoder.get(), bytes.data(), bytes.size(), pixels, width, 0, height,
                      grey ? TJPF_GRAY : TJPF_RGB, TJFLAG_STOPONWARNING) != 0) {
        const std::string reason = tjGetErrorStr2(decoder.get());
        hostTable()->imageFunctions->free(image);
        throw CliError(path + ": cannot decode: " + reason);
    }
    return image;
}

}  // namespace tarvex_cli
