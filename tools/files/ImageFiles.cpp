#include "ImageFiles.h"

#include <spng.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Command.h"
#include "FileAccess.h"
#include "HostTable.h"
#include "JpegFiles.h"
#include "refhost/refhost.h"

namespace tarvex_cli {
namespace {

struct ContextFree {
    void operator()(spng_ctx *context) const { spng_ctx_free(context); }
};
using Context = std::unique_ptr<spng_ctx, ContextFree>;

struct FileClose {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileClose>;

void check(int code, const std::string &path, const char *step) {
    if (code != 0) throw CliError(path + ": " + step + ": " + spng_strerror(code));
}

File openFile(const std::string &path, const char *mode) {
    if (*mode == 'r') checkReadable(path);
    File file(std::fopen(path.c_str(), mode));
    if (!file) throw CliError("cannot open " + path + ": " + std::strerror(errno));
    return file;
}

// How to decode a PNG into host samples: 8 or 16 bits, 1 to 4 channels, with
// palettes expanded and tRNS turned into an alpha channel.
struct Decoding {
    int format;
    int flags;
    mint channels;
};

Decoding chooseDecoding(const spng_ihdr &header, bool hasTransparency) {
    const bool sixteen = header.bit_depth == 16;
    const int trns = hasTransparency ? SPNG_DECODE_TRNS : 0;
    switch (header.color_type) {
    case SPNG_COLOR_TYPE_GRAYSCALE:
        if (hasTransparency) return {sixteen ? SPNG_FMT_GA16 : SPNG_FMT_GA8, trns, 2};
        return {header.bit_depth >= 8 ? SPNG_FMT_PNG : SPNG_FMT_G8, 0, 1};
    case SPNG_COLOR_TYPE_TRUECOLOR:
        if (hasTransparency) return {sixteen ? SPNG_FMT_RGBA16 : SPNG_FMT_RGBA8, trns, 4};
        return {SPNG_FMT_PNG, 0, 3};
    case SPNG_COLOR_TYPE_INDEXED:
        if (hasTransparency) return {SPNG_FMT_RGBA8, trns, 4};
        return {SPNG_FMT_RGB8, 0, 3};
    // SPNG_FMT_PNG keeps the file's own samples, 16-bit ones in host byte order.
    case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA: return {SPNG_FMT_PNG, 0, 2};
    default: return {SPNG_FMT_PNG, 0, 4};
    }
}

MImage newInterleavedImage(const spng_ihdr &header, const Decoding &decoding, const std::string &path) {
    const bool alpha = decoding.channels == 2 || decoding.channels == 4;
    MImage image = nullptr;
    int code = rh_image_new(0, header.width, header.height, decoding.channels,
                            header.bit_depth == 16 ? MImage_Type_Bit16 : MImage_Type_Bit8,
                            decoding.channels <= 2 ? MImage_CS_Gray : MImage_CS_RGB, QUORBEL_TRUE,
                            alpha ? QUORBEL_TRUE : QUORBEL_FALSE, &image);
    if (code != 0) throw CliError(path + ": the host could not make an image (code " + std::to_string(code) + ")");
    return image;
}

std::uint8_t pngColorType(mint channels) {
    switch (channels) {
    case 1: return SPNG_COLOR_TYPE_GRAYSCALE;
    case 2: return SPNG_COLOR_TYPE_GRAYSCALE_ALPHA;
    case 3: return SPNG_COLOR_TYPE_TRUECOLOR;
    default: return SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
    }
}

void checkWritable(QuorbelImageFunctions images, MImage image, mint slice, const std::string &path) {
    const MImage_Data_Type type = images->getDataType(image);
    const mint channels = images->getChannels(image);
    if (type != MImage_Type_Bit8 && type != MImage_Type_Bit16)
        throw CliError(path + ": PNG holds 8-bit or 16-bit samples only");
    if (channels < 1 || channels > 4) throw CliError(path + ": PNG holds 1 to 4 channels only");
    if (channels > 1 && !images->interleavedQ(image)) throw CliError(path + ": the image is not interleaved");
    if (slice < 0 || slice >= images->getSliceCount(image))
        throw CliError(path + ": the image has no slice " + std::to_string(slice));
}

void writePngFile(MImage image, mint slice, const std::string &path) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    checkWritable(images, image, slice, path);
    const mint width = images->getColumnCount(image);
    const mint height = images->getRowCount(image);
    const mint channels = images->getChannels(image);
    const bool sixteen = images->getDataType(image) == MImage_Type_Bit16;
    const std::size_t sliceBytes = std::size_t(width) * height * channels * (sixteen ? 2 : 1);

    File file = openFile(path, "wb");
    Context context(spng_ctx_new(SPNG_CTX_ENCODER));
    if (!context) throw CliError(path + ": out of memory");
    check(spng_set_png_file(context.get(), file.get()), path, "cannot write");
    spng_ihdr header{};
    header.width = static_cast<std::uint32_t>(width);
    header.height = static_cast<std::uint32_t>(height);
    header.bit_depth = sixteen ? 16 : 8;
    header.color_type = pngColorType(channels);
    check(spng_set_ihdr(context.get(), &header), path, "cannot write");
    const auto *samples = static_cast<const unsigned char *>(images->getRawData(image)) + slice * sliceBytes;
    // SPNG_FMT_PNG takes 16-bit samples in host byte order, as the host keeps them.
    check(spng_encode_image(context.get(), samples, sliceBytes, SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE), path,
          "cannot write");
    context.reset();
    if (std::fclose(file.release()) != 0) throw CliError("cannot write " + path + ": " + std::strerror(errno));
}

// An open PNG file, read up to its image data.
struct PngStart {
    File file;
    Context context;
    spng_ihdr header{};
    Decoding decoding{};
};

PngStart startPng(const std::string &path) {
    PngStart png{openFile(path, "rb"), Context(spng_ctx_new(0))};
    if (!png.context) throw CliError(path + ": out of memory");
    check(spng_set_png_file(png.context.get(), png.file.get()), path, "cannot read");
    check(spng_get_ihdr(png.context.get(), &png.header), path, "not a readable PNG file");
    // Asking for tRNS reads every chunk before the image data: a fault there
    // must be told, not taken for a file without transparency.
    spng_trns transparency{};
    const int trns = spng_get_trns(png.context.get(), &transparency);
    if (trns != SPNG_ECHUNKAVAIL) check(trns, path, "not a readable PNG file");
    png.decoding = chooseDecoding(png.header, trns == 0);
    return png;
}

enum class PictureKind { Png, Jpeg };

PictureKind pictureKind(const std::string &path) {
    unsigned char magic[3] = {};
    File file = openFile(path, "rb");
    if (std::fread(magic, 1, sizeof magic, file.get()) != sizeof magic) return PictureKind::Png;
    // Otherwise a GIF file would be reported as a PNG file with a bad signature.
    if (std::memcmp(magic, "GIF", 3) == 0)
        throw CliError(path + ": a GIF file; give a PNG or JPEG picture here "
                              "(tarvex frames writes a GIF's frames as PNG)");
    return magic[0] == 0xFF && magic[1] == 0xD8 && magic[2] == 0xFF ? PictureKind::Jpeg : PictureKind::Png;
}

}  // namespace

MImage readPng(const std::string &path) {
    const PngStart png = startPng(path);
    spng_ctx *const context = png.context.get();
    const spng_ihdr &header = png.header;
    const Decoding &decoding = png.decoding;

    std::size_t length = 0;
    check(spng_decoded_image_size(context, decoding.format, &length), path, "cannot decode");
    MImage image = newInterleavedImage(header, decoding, path);
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const std::size_t expected = std::size_t{header.width} * header.height * decoding.channels * (header.bit_depth == 16 ? 2 : 1);
    int code = length != expected ? SPNG_EINTERNAL
                                  : spng_decode_image(context, images->getRawData(image), length,
                                                      decoding.format, decoding.flags);
    // The decoder stops once it has the last row, before the checksum of the
    // image data's chunk: reading on to the end of the file checks it.
    if (code == 0) code = spng_decode_chunks(context);
    if (code != 0) {
        images->free(image);
        check(code, path, "cannot decode");
    }
    return image;
}

MImage readImageFile(const std::string &argument) {
    const std::string path = readablePath(argument);
    return pictureKind(path) == PictureKind::Jpeg ? readJpeg(path) : readPng(path);
}

PictureShape readImageShape(const std::string &argument) {
    const std::string path = readablePath(argument);
    if (pictureKind(path) == PictureKind::Jpeg) return readJpegShape(path);
    const PngStart png = startPng(path);
    const mint channels = png.decoding.channels;
    return {png.header.width, png.header.height, channels, png.header.bit_depth == 16 ? 16 : 8,
            channels == 2 || channels == 4};
}

void writePng(MImage image, mint slice, const std::string &path) {
    writeOutput(path, [&](const std::string &file) { writePngFile(image, slice, file); });
}

}  // namespace tarvex_cli
