// PNG and raw sample files against host images.

#include <gtest/gtest.h>
#include <spng.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <numeric>

#include "BinaryFiles.h"
#include "Command.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "RawSampleFile.h"

using namespace tarvex_cli;

namespace {

class ImageFilesTest : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ = std::filesystem::temp_directory_path() / ("tarvex-image-files-" + std::to_string(getpid()));
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override {
        for (MImage image : images_) images()->free(image);
        std::filesystem::remove_all(directory_);
    }

    static QuorbelImageFunctions images() { return hostTable()->imageFunctions; }
    std::string path(const char *name) const { return (directory_ / name).string(); }

    MImage keep(MImage image) {
        images_.push_back(image);
        return image;
    }

    // An image whose bytes count up from `seed`, so that any misplaced sample shows.
    MImage patterned(const RawImageLayout &layout, unsigned seed = 1) {
        MImage image = nullptr;
        EXPECT_EQ(rh_image_new(layout.slices, layout.width, layout.height, layout.channels, layout.type,
                               layout.colorSpace, !layout.planar, layout.alpha, &image),
                  0);
        auto *bytes = static_cast<unsigned char *>(images()->getRawData(image));
        for (std::size_t i = 0; i < rawImageByteCount(layout); ++i)
            bytes[i] = static_cast<unsigned char>(layout.type == MImage_Type_Bit ? (i + seed) % 2 : i * 7 + seed);
        return keep(image);
    }

    static std::vector<unsigned char> samplesOf(MImage image, std::size_t offset, std::size_t count) {
        const auto *bytes = static_cast<const unsigned char *>(images()->getRawData(image));
        return std::vector<unsigned char>(bytes + offset, bytes + offset + count);
    }

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
        ASSERT_EQ(spng_set_ihdr(context, &header), 0);
        ASSERT_EQ(spng_set_plte(context, &palette), 0);
        ASSERT_EQ(spng_set_trns(context, &transparency), 0);
        const unsigned char indices[] = {0, 1, 1};
        ASSERT_EQ(spng_encode_image(context, indices, sizeof indices, SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE), 0);
        spng_ctx_free(context);
        std::fclose(out);
    }

    std::filesystem::path directory_;
    std::vector<MImage> images_;
};

RawImageLayout layout(MImage_Data_Type type, mint channels, bool alpha, MImage_CS_Type space) {
    RawImageLayout l;
    l.type = type;
    l.width = 5;
    l.height = 3;
    l.channels = channels;
    l.alpha = alpha;
    l.colorSpace = space;
    return l;
}

}  // namespace

TEST_F(ImageFilesTest, PngRoundTripKeepsSamplesChannelsAndAlpha) {
    const RawImageLayout cases[] = {
        layout(MImage_Type_Bit8, 1, false, MImage_CS_Gray),  layout(MImage_Type_Bit8, 2, true, MImage_CS_Gray),
        layout(MImage_Type_Bit8, 3, false, MImage_CS_RGB),   layout(MImage_Type_Bit8, 4, true, MImage_CS_RGB),
        layout(MImage_Type_Bit16, 1, false, MImage_CS_Gray), layout(MImage_Type_Bit16, 3, false, MImage_CS_RGB),
        layout(MImage_Type_Bit16, 4, true, MImage_CS_RGB),
    };
    for (const RawImageLayout &original : cases) {
        SCOPED_TRACE(formatRawImageLayout(original));
        MImage written = patterned(original);
        writePng(written, 0, path("round.png"));
        MImage read = keep(readPng(path("round.png")));
        EXPECT_EQ(formatRawImageLayout(layoutOf(read)), formatRawImageLayout(original));
        const std::size_t bytes = rawImageByteCount(original);
        EXPECT_EQ(samplesOf(read, 0, bytes), samplesOf(written, 0, bytes));
    }
}

TEST_F(ImageFilesTest, PngOfOneSliceOfAStack) {
    RawImageLayout stack = layout(MImage_Type_Bit8, 3, false, MImage_CS_RGB);
    stack.slices = 2;
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
    EXPECT_EQ(images()->getChannels(read), 4);
    EXPECT_TRUE(images()->alphaChannelQ(read));
    EXPECT_EQ(samplesOf(read, 0, 8), (std::vector<unsigned char>{10, 20, 30, 128, 40, 50, 60, 255}));
}

TEST_F(ImageFilesTest, PngFailuresAreClearErrors) {
    MImage real = patterned(layout(MImage_Type_Real32, 3, false, MImage_CS_RGB));
    try {
        writePng(real, 0, path("real.png"));
        FAIL() << "a real image was written as PNG";
    } catch (const CliError &error) {
        EXPECT_NE(std::string(error.what()).find("8-bit or 16-bit"), std::string::npos);
    }
    writeFileBytes(path("text.png"), "not a png", 9);
    try {
        readPng(path("text.png"));
        FAIL() << "text was read as PNG";
    } catch (const CliError &error) {
        EXPECT_EQ(error.exitStatus, 1);
        EXPECT_NE(std::string(error.what()).find(path("text.png")), std::string::npos);
    }
    EXPECT_THROW(readPng(path("missing.png")), CliError);
}

TEST_F(ImageFilesTest, RawSampleFilesRoundTripInEveryLayout) {
    RawImageLayout planar = layout(MImage_Type_Real64, 4, true, MImage_CS_RGB);
    planar.planar = true;
    planar.slices = 2;
    RawImageLayout bits = layout(MImage_Type_Bit, 1, false, MImage_CS_Gray);
    for (const RawImageLayout &original : {planar, bits}) {
        SCOPED_TRACE(formatRawImageLayout(original));
        MImage written = patterned(original);
        writeRawImage(written, path("samples.raw"));
        MImage read = keep(readRawImage(path("samples.raw"), original));
        EXPECT_EQ(formatRawImageLayout(layoutOf(read)), formatRawImageLayout(original));
        EXPECT_EQ(samplesOf(read, 0, rawImageByteCount(original)), samplesOf(written, 0, rawImageByteCount(original)));
    }
}

TEST_F(ImageFilesTest, RawSampleFilesMustMatchTheirLayout) {
    const RawImageLayout bits = layout(MImage_Type_Bit, 1, false, MImage_CS_Gray);
    std::vector<unsigned char> samples(rawImageByteCount(bits), 1);
    writeFileBytes(path("short.raw"), samples.data(), samples.size() - 1);
    try {
        readRawImage(path("short.raw"), bits);
        FAIL() << "a short file was accepted";
    } catch (const CliError &error) {
        EXPECT_EQ(error.exitStatus, 2);
        EXPECT_NE(std::string(error.what()).find("holds 14 bytes"), std::string::npos);
    }
    samples[4] = 2;
    writeFileBytes(path("bits.raw"), samples.data(), samples.size());
    EXPECT_THROW(readRawImage(path("bits.raw"), bits), CliError);
}
