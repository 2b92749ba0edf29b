// PNG and raw sample files against host images.

#include <gtest/gtest.h>
#include <spng.h>
#include <turbojpeg.h>

#include <utility>

#include "BinaryFiles.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "RawSampleFile.h"
#include "Support.h"
#include "refhost/refhost.hpp"

using namespace tarvex_cli;

namespace {

class ImageFilesTest : public ScratchTest {
protected:
    MImage keep(MImage image) { return owned_.emplace_back(image).get(); }

    // An image whose bytes count up from 1, so that any misplaced sample shows.
    MImage patterned(const RawImageLayout &layout) {
        MImage image = nullptr;
        EXPECT_EQ(rh_image_new(layout.slices, layout.width, layout.height, layout.channels, layout.type,
                               layout.colorSpace, !layout.planar, layout.alpha, &image),
                  0);
        auto *bytes = static_cast<unsigned char *>(hostTable()->imageFunctions->getRawData(image));
        for (std::size_t i = 0; i < rawImageByteCount(layout); ++i)
            bytes[i] = static_cast<unsigned char>(layout.type == MImage_Type_Bit ? (i + 1) % 2 : i * 7 + 1);
        return keep(image);
    }

    static std::vector<unsigned char> samplesOf(MImage image, std::size_t offset, std::size_t count) {
        const auto *bytes = static_cast<const unsigned char *>(hostTable()->imageFunctions->getRawData(image));
        return std::vector<unsigned char>(bytes + offset, bytes + offset + count);
    }

    std::vector<rh::Image> owned_;
};

// A palette PNG of one row with a tRNS chunk, written with spng itself.
void writePalettePng(const std::string &file) {
    spng_ctx *context = spng_ctx_new(SPNG_CTX_ENCODER);
    FILE *out = std::fopen(file.c_str(), "wb");
    ASSERT_TRUE(context && out);
    spng_set_png_file(context, out);
    spng_ihdr header{3, 1, 8, SPNG_COLOR_TYPE_INDEXED, 0, 0, 0};
    spng_plte palette{};
    palette.n_entries = 2;
    palette.entries[0] = {10, 20, 30, 0};
    palette.entries[1] = {40, 50, 60, 0};
    spng_trns transparency{};
    transparency.n_type3_entries = 1;
    transparency.type3_alpha[0] = 128;
    const unsigned char indices[] = {0, 1, 1};
    EXPECT_TRUE(spng_set_ihdr(context, &header) == 0 && spng_set_plte(context, &palette) == 0 &&
                spng_set_trns(context, &transparency) == 0 &&
                spng_encode_image(context, indices, sizeof indices, SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE) == 0);
    spng_ctx_free(context);
    std::fclose(out);
}

// A flat JPEG as libjpeg-turbo writes it: grey, or with TJPF_CMYK a CMYK one.
std::vector<unsigned char> flatJpeg(int width, int height, int pixelFormat = TJPF_GRAY) {
    const std::vector<unsigned char> pixels(std::size_t(width) * height * tjPixelSize[pixelFormat], 90);
    tjhandle encoder = tjInitCompress();
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(tjCompress2(encoder, pixels.data(), width, 0, height, pixelFormat, &bytes, &size,
                          pixelFormat == TJPF_GRAY ? TJSAMP_GRAY : TJSAMP_444, 90, 0),
              0);
    std::vector<unsigned char> jpeg(bytes, bytes + size);
    tjFree(bytes);
    tjDestroy(encoder);
    return jpeg;
}

// The same bytes with another size in their start-of-frame segment, found by
// walking the segments that precede it.
std::vector<unsigned char> withDeclaredSize(std::vector<unsigned char> jpeg, int width, int height) {
    for (std::size_t at = 2; at + 9 < jpeg.size(); at += 2 + (jpeg[at + 2] << 8 | jpeg[at + 3])) {
        if (jpeg[at + 1] != 0xC0) continue;
        const unsigned char size[] = {std::uint8_t(height >> 8), std::uint8_t(height), std::uint8_t(width >> 8),
                                      std::uint8_t(width)};
        std::copy(size, size + 4, jpeg.begin() + long(at) + 5);
        return jpeg;
    }
    ADD_FAILURE() << "no start-of-frame segment";
    return jpeg;
}

// A PNG file's bytes with the checksum of its first `type` chunk broken.
std::string withBrokenChecksum(std::string png, const char *type) {
    for (std::size_t at = 8; at + 12 <= png.size();) {
        const auto byte = [&](std::size_t i) { return std::size_t(static_cast<unsigned char>(png[at + i])); };
        const std::size_t length = byte(0) << 24 | byte(1) << 16 | byte(2) << 8 | byte(3);
        if (png.compare(at + 4, 4, type) == 0) {
            png[at + 8 + length] ^= 0x55;
            return png;
        }
        at += 12 + length;
    }
    ADD_FAILURE() << "no " << type << " chunk";
    return png;
}

}  // namespace

TEST_F(ImageFilesTest, PngChunksWithBrokenChecksumsAreRefused) {
    writeTestPng(path("grey.png"), 3, 2, 1, 8, [](int i, int) { return std::uint16_t(i * 40); });
    writePalettePng(path("palette.png"));
    const std::pair<std::string, std::string> broken[] = {
        // The decoder has every row before it reaches the image data's checksum.
        {withBrokenChecksum(tarvex_test::fileContents(path("grey.png")), "IDAT"), "cannot decode: invalid chunk checksum"},
        // Read while asking for transparency, before the image data.
        {withBrokenChecksum(tarvex_test::fileContents(path("palette.png")), "PLTE"),
         "not a readable PNG file: invalid chunk checksum"},
    };
    for (const auto &[bytes, message] : broken) {
        writeFileBytes(path("broken.png"), bytes.data(), bytes.size());
        EXPECT_NE(cliFailure([&] { keep(readPng(path("broken.png"))); }, 1).find(message), std::string::npos) << message;
    }
}

TEST_F(ImageFilesTest, JpegDataThatEndsEarlyIsNotMadeUp) {
    const std::vector<unsigned char> whole = flatJpeg(256, 128);  // its last third is scan data
    writeFileBytes(path("whole.jpg"), whole.data(), whole.size());
    EXPECT_EQ(hostTable()->imageFunctions->getColumnCount(keep(readImageFile(path("whole.jpg")))), 256);
    const std::pair<const char *, std::vector<unsigned char>> broken[] = {
        {"cut.jpg", std::vector<unsigned char>(whole.begin(), whole.end() - long(whole.size() / 3))},
        // A few hundred bytes that claim 16 million pixels.
        {"claims-more.jpg", withDeclaredSize(whole, 4096, 4096)},
    };
    for (const auto &[name, bytes] : broken) {
        SCOPED_TRACE(name);
        writeFileBytes(path(name), bytes.data(), bytes.size());
        EXPECT_NE(cliFailure([&] { keep(readImageFile(path(name))); }, 1).find(path(name) + ": cannot decode"),
                  std::string::npos);
    }
}

TEST_F(ImageFilesTest, JpegFilesThatGiveNoPictureSayWhy) {
    const std::pair<std::vector<unsigned char>, const char *> cases[] = {
        {{0xFF, 0xD8, 0xFF, 0xD9}, "not a readable JPEG file: it gives no picture size"},  // start, then end
        {flatJpeg(8, 8, TJPF_CMYK), "a CMYK JPEG file; the tool reads grey and colour"},
    };
    for (const auto &[bytes, message] : cases) {
        writeFileBytes(path("x.jpg"), bytes.data(), bytes.size());
        EXPECT_NE(cliFailure([&] { keep(readImageFile(path("x.jpg"))); }, 1).find(message), std::string::npos);
    }
}

TEST_F(ImageFilesTest, FilesReadBackTheLayoutAndSamplesWritten) {
    // PNG takes 8- and 16-bit grey or RGB, with or without alpha; raw files anything.
    const std::pair<const char *, bool> cases[] = {
        {"type=byte,width=5,height=3,channels=1", true},
        {"type=byte,width=5,height=3,channels=2,alpha", true},
        {"type=byte,width=5,height=3,channels=3", true},
        {"type=byte,width=5,height=3,channels=4,alpha", true},
        {"type=bit16,width=5,height=3,channels=1", true},
        {"type=bit16,width=5,height=3,channels=3", true},
        {"type=bit16,width=5,height=3,channels=4,alpha", true},
        {"type=real64,width=5,height=3,channels=4,slices=2,planar,alpha", false},
        {"type=bit,width=5,height=3,channels=1", false},
    };
    for (const auto &[text, png] : cases) {
        SCOPED_TRACE(text);
        const RawImageLayout original = parseRawImageLayout(text);
        MImage written = patterned(original);
        const std::string file = path(png ? "round.png" : "round.raw");
        png ? writePng(written, 0, file) : writeRawImage(written, file);
        MImage read = keep(png ? readPng(file) : readRawImage(file, original));
        EXPECT_EQ(formatRawImageLayout(layoutOf(read)), formatRawImageLayout(original));
        const std::size_t bytes = rawImageByteCount(original);
        EXPECT_EQ(samplesOf(read, 0, bytes), samplesOf(written, 0, bytes));
    }
}

TEST_F(ImageFilesTest, PngOfOneSliceOfAStack) {
    const RawImageLayout stack = parseRawImageLayout("type=byte,width=5,height=3,channels=3,slices=2");
    MImage image = patterned(stack);
    writePng(image, 1, path("slice.png"));
    MImage read = keep(readPng(path("slice.png")));
    const std::size_t sliceBytes = rawImageByteCount(stack) / 2;
    EXPECT_EQ(samplesOf(read, 0, sliceBytes), samplesOf(image, sliceBytes, sliceBytes));
    EXPECT_THROW(writePng(image, 2, path("none.png")), CliError);
}

TEST_F(ImageFilesTest, PalettePngWithTransparencyBecomesRgba) {
    writePalettePng(path("palette.png"));
    MImage read = keep(readPng(path("palette.png")));
    EXPECT_EQ(hostTable()->imageFunctions->getChannels(read), 4);
    EXPECT_TRUE(hostTable()->imageFunctions->alphaChannelQ(read));
    EXPECT_EQ(samplesOf(read, 0, 8), (std::vector<unsigned char>{10, 20, 30, 128, 40, 50, 60, 255}));
}

TEST_F(ImageFilesTest, FilesThatCannotBeWrittenOrReadAreClearErrors) {
    MImage real = patterned(parseRawImageLayout("type=real32,width=5,height=3,channels=3"));
    EXPECT_NE(cliFailure([&] { writePng(real, 0, path("real.png")); }, 1).find("8-bit or 16-bit"), std::string::npos);
    writeFileBytes(path("text.png"), "not a png", 9);
    EXPECT_NE(cliFailure([&] { readPng(path("text.png")); }, 1).find(path("text.png")), std::string::npos);
    EXPECT_THROW(readPng(path("missing.png")), CliError);

    const RawImageLayout bits = parseRawImageLayout("type=bit,width=5,height=3,channels=1");
    std::vector<unsigned char> samples(rawImageByteCount(bits), 1);
    writeFileBytes(path("short.raw"), samples.data(), samples.size() - 1);
    EXPECT_NE(cliFailure([&] { readRawImage(path("short.raw"), bits); }, 2).find("holds 14 bytes"), std::string::npos);
    writeFileBytes(path("long.raw"), std::vector<unsigned char>(samples.size() + 1).data(), samples.size() + 1);
    EXPECT_NE(cliFailure([&] { readRawImage(path("long.raw"), bits); }, 2).find("holds more than 15 bytes"),
              std::string::npos);
    EXPECT_NE(cliFailure([&] { readRawImage("/dev/zero", bits); }, 2).find("holds more than 15 bytes"),
              std::string::npos);
    samples[4] = 2;
    writeFileBytes(path("bits.raw"), samples.data(), samples.size());
    EXPECT_THROW(readRawImage(path("bits.raw"), bits), CliError);
}
