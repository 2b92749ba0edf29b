// What both exports write, read back by giflib, by the plug-in's own import
// and by an independent decoder.
#include <optional>
#include <set>

#include "ExportCalls.h"
#include "ImportCalls.h"
#include "ToolRun.h"

namespace export_test {
namespace {

using tarvex_test::HostBooksGuard;

// Every decoded pixel as RGB bytes, frame after frame.
std::vector<std::uint8_t> decodedColors(const DecodedGif &gif) {
    std::vector<std::uint8_t> rgb;
    for (std::size_t k = 0; k < gif.images.size(); ++k)
        for (std::size_t i = 0; i < gif.images[k].indices.size(); ++i) {
            const Rgb c = gif.color(k, i);
            rgb.insert(rgb.end(), {c.r, c.g, c.b});
        }
    return rgb;
}

// The plug-in's composited frames without their alpha channel.
std::vector<std::uint8_t> importedColors(const std::string &path) {
    const gif_test::Picture picture = gif_test::readAllFrames(path);
    EXPECT_EQ(picture.code, 0);
    gif_test::clearCache(path);  // the next test writes a new file of that name
    std::vector<std::uint8_t> rgb;
    for (std::size_t i = 0; i < picture.samples.size(); i += std::size_t(picture.channels))
        rgb.insert(rgb.end(), picture.samples.begin() + long(i), picture.samples.begin() + long(i) + 3);
    return rgb;
}

// Pillow's reading of the frames as RGB bytes; none when Pillow is missing.
std::optional<std::vector<std::uint8_t>> pillowColors(const std::string &path) {
    const char *const python3 = "/usr/bin/python3";
    const tarvex_test::ProgramRun probe = tarvex_test::runProgram(python3, {"-c", "import PIL"});
    if (!probe.started || probe.status != 0) return std::nullopt;
    const char *const script =
        "import sys\nfrom PIL import Image, ImageSequence\n"
        "for f in ImageSequence.Iterator(Image.open(sys.argv[1])): "
        "sys.stdout.buffer.write(f.convert('RGB').tobytes())";
    const tarvex_test::ProgramRun python = tarvex_test::runProgram(python3, {"-c", script, path});
    EXPECT_EQ(python.status, 0) << python.err;
    return std::vector<std::uint8_t>(python.out.begin(), python.out.end());
}

void expectEveryDecoderAgrees(const std::string &path, const std::vector<std::uint8_t> &expected) {
    const DecodedGif gif = decodeGif(path);
    EXPECT_EQ(decodedColors(gif), expected) << "giflib";
    EXPECT_EQ(importedColors(path), expected) << "import";
    if (const auto pillow = pillowColors(path)) {
        EXPECT_EQ(*pillow, expected) << "Pillow";
    }
}

std::string writeRgb(const std::string &name, mint slices, mint width, mint height,
                     const std::vector<std::uint8_t> &samples, WriteOptions options = {}) {
    HostBooksGuard guard;
    options.file = outputPath(name);
    const rh::Image image = byteImage(slices, width, height, 3, samples);
    EXPECT_EQ(writeFrames(image.get(), options).code, 0) << name;
    return options.file;
}

// Frames of at most 256 colours come back exactly, each with its own map
// when neighbours differ, with one global map when all agree.
TEST(RoundTrip, FewColourRgbFramesComeBackExactly) {
    const mint w = 24, h = 16;
    std::vector<std::uint8_t> frames;
    for (int k = 0; k < 3; ++k) {
        const std::vector<std::uint8_t> pick = randomBytes(std::size_t(w * h), std::uint64_t(k + 1), 40);
        for (std::uint8_t p : pick) frames.insert(frames.end(), {std::uint8_t(p * 6), std::uint8_t(k * 80), std::uint8_t(255 - p)});
    }
    for (const char *dither : {"None", "FloydSteinberg"}) {
        WriteOptions options;
        options.dither = dither;
        const std::string path = writeRgb("few.gif", 3, w, h, frames, options);
        const DecodedGif gif = decodeGif(path);
        EXPECT_TRUE(gif.globalMap.empty());
        EXPECT_EQ(gif.background, 255);
        for (const DecodedImage &image : gif.images) EXPECT_EQ(image.localMap.size(), 64u);
        expectEveryDecoderAgrees(path, frames);
    }
    std::vector<std::uint8_t> twice(std::size_t(w * h * 3) * 2);
    std::copy(frames.begin(), frames.begin() + w * h * 3, twice.begin());
    std::copy(frames.begin(), frames.begin() + w * h * 3, twice.begin() + w * h * 3);
    const std::string path = writeRgb("same.gif", 2, w, h, twice);
    const DecodedGif gif = decodeGif(path);
    EXPECT_EQ(gif.globalMap.size(), 64u);
    for (const DecodedImage &image : gif.images) EXPECT_TRUE(image.localMap.empty());
    expectEveryDecoderAgrees(path, twice);
}

// A photograph-like frame loses little: every decoder sees the same pixels,
// close to the originals on average, with and without diffusion.
TEST(RoundTrip, ManyColourFramesAreApproximatedClosely) {
    const mint w = 96, h = 64;
    const std::vector<std::uint8_t> photo = photoLike(int(w), int(h), 2, 7);
    std::set<std::uint32_t> distinct;
    for (std::size_t i = 0; i < photo.size(); i += 3)
        distinct.insert(std::uint32_t(photo[i]) << 16 | std::uint32_t(photo[i + 1]) << 8 | photo[i + 2]);
    ASSERT_GT(distinct.size(), 256u);
    for (const char *dither : {"None", "FloydSteinberg"}) {
        WriteOptions options;
        options.dither = dither;
        const std::string path = writeRgb("photo.gif", 2, w, h, photo, options);
        const std::vector<std::uint8_t> decoded = decodedColors(decodeGif(path));
        ASSERT_EQ(decoded.size(), photo.size());
        double error = 0;
        for (std::size_t i = 0; i < photo.size(); ++i) error += std::abs(int(decoded[i]) - int(photo[i]));
        EXPECT_LT(error / double(photo.size()), 8.0) << dither;
        expectEveryDecoderAgrees(path, decoded);
    }
}

TEST(RoundTrip, GreyFramesComeBackWithTheirTransparency) {
    HostBooksGuard guard;
    const std::vector<std::uint8_t> levels{0, 50, 100, 150, 50, 50, 200, 0, 100, 100, 100, 255};
    struct Case {
        TensorArgument transparency;
        std::vector<int> indices;  // per frame
    };
    // Used levels 0 50 100 150 200 255 are map entries 0..5.
    const Case cases[] = {
        {ints({50}), {1, 1, 1}},
        {ints({0, 100, 255}), {0, 2, 5}},
        {ints({0, 300, 150}), {0, -1, 3}},
        {ints({100, 100, 255}, {3, 1}), {2, 2, 5}},
    };
    for (const Case &c : cases) {
        WriteOptions options;
        options.file = outputPath("grey.gif");
        options.transparency = c.transparency;
        const rh::Image image = byteImage(3, 2, 2, 1, levels);
        ASSERT_EQ(writeFrames(image.get(), options).code, 0);
        const DecodedGif gif = decodeGif(options.file);
        ASSERT_EQ(gif.images.size(), 3u);
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_EQ(gif.images[k].control.value().TransparentColor, c.indices[k]) << "frame " << k;
        std::vector<std::uint8_t> grey;
        for (std::size_t i = 0; i < gif.images.size() * 4; ++i) grey.push_back(gif.color(i / 4, i % 4).g);
        EXPECT_EQ(grey, levels);
    }
}

// Index frames with a map each (written locally, the background then 255),
// and grey frames, read the same everywhere.
TEST(RoundTrip, IndexAndGreyFramesComeBackExactly) {
    HostBooksGuard guard;
    const std::string indexed = outputPath("indexed.gif");
    WriteOptions options;
    options.file = indexed;
    const rh::RawArray maps = byteArray({2, 4, 3}, {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255,
                                                    9, 9, 9, 80, 80, 80, 160, 160, 160, 250, 250, 250});
    const std::vector<std::uint8_t> indices = randomBytes(2 * 5 * 7, 12, 4);
    const rh::RawArray raw = byteArray({2, 5, 7}, indices);
    ASSERT_EQ(writeColormaps(maps.get(), raw.get(), options).code, 0);
    std::vector<std::uint8_t> expected;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const std::size_t entry = (i / 35) * 12 + indices[i] * 3u;
        const auto *colors = static_cast<const std::uint8_t *>(
            rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->getData(maps.get()));
        expected.insert(expected.end(), colors + entry, colors + entry + 3);
    }
    expectEveryDecoderAgrees(indexed, expected);
    const DecodedGif gif = decodeGif(indexed);
    EXPECT_TRUE(gif.globalMap.empty());
    EXPECT_EQ(gif.background, 255);
    EXPECT_EQ(gif.images.at(1).localMap, (std::vector<Rgb>{{9, 9, 9}, {80, 80, 80}, {160, 160, 160}, {250, 250, 250}}));

    const std::vector<std::uint8_t> levels = randomBytes(3 * 6 * 4, 13);
    options.file = outputPath("grey-exact.gif");
    const rh::Image grey = byteImage(3, 6, 4, 1, levels);
    ASSERT_EQ(writeFrames(grey.get(), options).code, 0);
    std::vector<std::uint8_t> rgb;
    for (std::uint8_t v : levels) rgb.insert(rgb.end(), {v, v, v});
    expectEveryDecoderAgrees(options.file, rgb);
}

}  // namespace
}  // namespace export_test
