// `tarvex gif`: frames from PNG and GIF files into one GIF file.
#include <turbojpeg.h>

#include <cstdlib>
#include <filesystem>
#include <set>

#include "BinaryFiles.h"
#include "ExportCalls.h"
#include "PluginDiscovery.h"
#include "Support.h"

using namespace tarvex_cli;

namespace {

class GifCommandTest : public ScratchTest {
protected:
    void SetUp() override { setPluginPath(TARVEX_PLUGIN_PATH); }

    static int run(std::vector<std::string> args) {
        for (const Command &command : commands())
            if (std::string(command.name) == "gif") return command.run(args);
        ADD_FAILURE() << "no gif command";
        return -1;
    }

    // A PNG of few colours, `seed` choosing which.
    std::string png(const std::string &name, int width, int height, int channels, int seed) const {
        return writeTestPng(path(name), width, height, channels, 8, [=](int i, int k) {
            return std::uint16_t(((i * channels + k) * 37 + seed * 101) % 7 * 40);
        });
    }

    // A JPEG of `channels` (1 or 3) flat-coloured 8-bit channels, so that it decodes without loss.
    std::string jpeg(const std::string &name, int width, int height, int channels) const {
        const std::vector<unsigned char> pixels(std::size_t(width) * height * channels, 200);
        tjhandle encoder = tjInitCompress();
        unsigned char *bytes = nullptr;
        unsigned long size = 0;
        EXPECT_EQ(tjCompress2(encoder, pixels.data(), width, 0, height, channels == 1 ? TJPF_GRAY : TJPF_RGB, &bytes,
                              &size, channels == 1 ? TJSAMP_GRAY : TJSAMP_444, 100, 0),
                  0);
        writeFileBytes(path(name), bytes, size);
        tjFree(bytes);
        tjDestroy(encoder);
        return path(name);
    }
};

// What giflib reads back: the colours of every pixel of every frame, packed,
// and each frame's delay.
struct Decoded {
    export_test::DecodedGif gif;
    std::set<std::uint32_t> colors;
    std::vector<int> delays;
};

Decoded decode(const std::string &file) {
    Decoded result;
    result.gif = export_test::decodeGif(file);
    for (std::size_t k = 0; k < result.gif.images.size(); ++k) {
        for (std::size_t i = 0; i < result.gif.images[k].indices.size(); ++i) {
            const export_test::Rgb c = result.gif.color(k, i);
            result.colors.insert(std::uint32_t(c.r) << 16 | std::uint32_t(c.g) << 8 | c.b);
        }
        result.delays.push_back(result.gif.images[k].control ? result.gif.images[k].control->DelayTime : -1);
    }
    return result;
}

TEST_F(GifCommandTest, WritesPngAndGifFramesInOrder) {
    const std::string first = png("a.png", 6, 4, 3, 1), grey = png("g.png", 6, 4, 1, 2);
    ASSERT_EQ(run({"-o", path("two.gif"), first, grey, "--delay", "0.5,0.25", "--loop", "2"}), 0);
    const Decoded two = decode(path("two.gif"));
    EXPECT_EQ(two.gif.images.size(), 2u);
    EXPECT_EQ(two.gif.width, 6);
    EXPECT_EQ(two.delays, (std::vector<int>{50, 25}));
    // Few colours: the frames come back exactly, and again when re-encoded.
    ASSERT_EQ(run({"-o", path("again.gif"), path("two.gif"), first, "--dither", "none"}), 0);
    const Decoded again = decode(path("again.gif"));
    EXPECT_EQ(again.gif.images.size(), 3u);
    EXPECT_EQ(again.colors, two.colors);
    EXPECT_EQ(again.delays, (std::vector<int>{10, 10, 10}));
}

TEST_F(GifCommandTest, ReadsJpegFramesInGreyAndColour) {
    const std::string colour = jpeg("c.jpg", 9, 5, 3), grey = jpeg("g.jpg", 9, 5, 1);
    ASSERT_EQ(run({"-o", path("jpeg.gif"), colour, grey}), 0);
    const Decoded written = decode(path("jpeg.gif"));
    EXPECT_EQ(written.gif.images.size(), 2u);
    EXPECT_EQ(written.gif.width, 9);
    EXPECT_EQ(written.colors, (std::set<std::uint32_t>{0xC8C8C8}));
    const std::string broken = path("broken.jpg");
    writeFileBytes(broken, "\xff\xd8\xffjunk", 7);
    const std::string message = cliFailure([&] { run({"-o", path("x.gif"), broken}); }, 1);
    EXPECT_NE(message.find("not a readable JPEG file"), std::string::npos) << message;
}

TEST_F(GifCommandTest, WritesIndicesAgainstTheGivenPalette) {
    const std::string frame = png("a.png", 8, 8, 3, 3);
    ASSERT_EQ(run({"-o", path("pal.gif"), frame, "--palette", "#000000,#ffffff,#ff0000"}), 0);
    const Decoded written = decode(path("pal.gif"));
    EXPECT_EQ(written.gif.images.size(), 1u);
    EXPECT_EQ(written.gif.globalMap, (std::vector<export_test::Rgb>{{0, 0, 0}, {255, 255, 255}, {255, 0, 0}, {0, 0, 0}}));
    for (std::uint32_t c : written.colors) EXPECT_TRUE(c == 0 || c == 0xFFFFFF || c == 0xFF0000) << c;
}

TEST_F(GifCommandTest, ABackgroundTheFileCannotHoldIsWarnedOf) {
    const std::string a = png("a.png", 6, 4, 3, 1), b = jpeg("b.jpg", 6, 4, 3);
    const auto warning = [&](std::vector<std::string> args) {
        const tarvex_test::ProgramRun run = tarvex_test::runTool(args);
        EXPECT_EQ(run.status, 0) << run.err;
        return run.err;
    };
    EXPECT_EQ(warning({"gif", "-o", path("kept.gif"), a, "--palette", "#000000,#ff0000", "--background", "#ff0000"}),
              "");
    EXPECT_NE(warning({"gif", "-o", path("white.gif"), a, "--palette", "#000000,#ffffff", "--background", "1,2,3"})
                  .find("--background is not in the shared palette; the screen's background is 255,255,255"),
              std::string::npos);
    const std::string none = warning({"gif", "-o", path("none.gif"), a, b, "--background", "#ff0000"});
    EXPECT_NE(none.find("the screen has no background: the frames have palettes of their own"), std::string::npos)
        << none;
    EXPECT_EQ(warning({"gif", "-q", "-o", path("quiet.gif"), a, b, "--background", "#ff0000"}), "");
}

TEST_F(GifCommandTest, DelaysMustFitTheFilesSixteenBits) {
    const std::string a = png("a.png", 6, 4, 3, 1);
    ASSERT_EQ(run({"-o", path("slow.gif"), a, "--delay", "655.35"}), 0);
    EXPECT_EQ(decode(path("slow.gif")).delays, std::vector<int>{65535});
    // Each of these would be written as some other delay.
    for (const std::string delay : {"655.36", "-1", "-0.01", "1e300"}) {
        const std::string message = cliFailure([&] { run({"-o", path("x.gif"), a, "--delay", delay}); }, 2);
        EXPECT_NE(message.find("--delay needs seconds from 0 to 655.35, not '" + delay + "'"), std::string::npos)
            << message;
    }
}

TEST_F(GifCommandTest, FramesAreHeldOnceWithinTheMemoryBudget) {
    const std::string a = png("a.png", 64, 64, 3, 1);
    ASSERT_EQ(run({"-o", path("ten.gif"), a, a, a, a, a, a, a, a, a, a}), 0);
    // The ten frames take 122,880 bytes: they fit 200,000 once, not twice.
    setenv("TARVEX_MEMORY_BUDGET", "200000", 1);
    const tarvex_test::ProgramRun fits = tarvex_test::runTool({"gif", "-o", path("y.gif"), path("ten.gif")});
    setenv("TARVEX_MEMORY_BUDGET", "100000", 1);
    const tarvex_test::ProgramRun refused = tarvex_test::runTool({"gif", "-o", path("x.gif"), a, path("ten.gif")});
    unsetenv("TARVEX_MEMORY_BUDGET");
    EXPECT_EQ(fits.status, 0) << fits.err;
    EXPECT_EQ(decode(path("y.gif")).gif.images.size(), 10u);
    expectToolMessage(refused, 1, path("ten.gif") + ": 10 frames of 64x64 would take more memory than the budget");
    EXPECT_FALSE(std::filesystem::exists(path("x.gif")));
}

// Frames of 20x16 with alpha, and which of their pixels must come out
// transparent: alpha below 128, and with `key` also that opaque colour.
struct AlphaFrame {
    std::string file;
    std::vector<bool> clear;
    std::vector<export_test::Rgb> colors;  // of every pixel
};

constexpr int kW = 20, kH = 16;

// Few colours; transparent pixels hide the colour of the opaque pixel next
// to them, and alpha 127 and 128 fall either side of the threshold.
AlphaFrame fewColours(const std::string &file) {
    const export_test::Rgb colors[3] = {{255, 0, 0}, {0, 200, 0}, {10, 20, 30}};
    const std::uint16_t alphas[4] = {0, 127, 128, 255};
    AlphaFrame frame;
    frame.file = writeTestPng(file, kW, kH, 4, 8, [&](int i, int k) {
        const export_test::Rgb c = colors[i / 4 % 3];
        return k == 3 ? alphas[i % 4] : std::uint16_t(k == 0 ? c.r : k == 1 ? c.g : c.b);
    }, true);
    for (int i = 0; i < kW * kH; ++i) frame.clear.push_back(i % 4 < 2), frame.colors.push_back(colors[i / 4 % 3]);
    return frame;
}

AlphaFrame greyAlpha(const std::string &file) {
    AlphaFrame frame;
    frame.file = writeTestPng(file, kW, kH, 2, 8, [](int i, int k) {
        return std::uint16_t(k == 1 ? (i % 3 == 0 ? 0 : 255) : i % 5 * 60);
    }, true);
    for (int i = 0; i < kW * kH; ++i) {
        const auto level = std::uint8_t(i % 5 * 60);
        frame.clear.push_back(i % 3 == 0), frame.colors.push_back({level, level, level});
    }
    return frame;
}

// 320 colours, more than a map holds beside the transparent entry.
AlphaFrame manyColours(const std::string &file) {
    AlphaFrame frame;
    frame.file = writeTestPng(file, kW, kH, 4, 8, [](int i, int k) {
        if (k == 3) return std::uint16_t(i % 7 == 0 ? 0 : 255);
        return std::uint16_t(k == 0 ? i % 256 : k == 1 ? i / 256 * 90 : 255 - i % 256);
    }, true);
    for (int i = 0; i < kW * kH; ++i) frame.clear.push_back(i % 7 == 0), frame.colors.push_back({});
    return frame;
}

// Checks that exactly the pixels meant to be clear carry frame k's
// transparent index, and, when `exact`, that the others kept their colours.
void expectTransparency(const export_test::DecodedGif &gif, std::size_t k, const AlphaFrame &frame, bool exact) {
    ASSERT_TRUE(gif.images.at(k).control);
    const int transparent = gif.images[k].control->TransparentColor;
    ASSERT_GE(transparent, 0) << "frame " << k;
    for (std::size_t i = 0; i < frame.clear.size(); ++i) {
        EXPECT_EQ(gif.images[k].indices[i] == transparent, bool(frame.clear[i])) << "frame " << k << " pixel " << i;
        if (exact && !frame.clear[i]) {
            EXPECT_EQ(gif.color(k, i), frame.colors[i]) << "frame " << k << " pixel " << i;
        }
    }
}

TEST_F(GifCommandTest, AlphaBelowHalfBecomesTransparency) {
    const AlphaFrame few = fewColours(path("few.png")), grey = greyAlpha(path("grey.png")),
                     many = manyColours(path("many.png"));
    const std::string opaque = png("opaque.png", kW, kH, 3, 4);
    for (const std::string dither : {"floyd-steinberg", "none"}) {
        ASSERT_EQ(run({"-o", path("alpha.gif"), few.file, grey.file, many.file, opaque, "--dither", dither}), 0);
        const Decoded written = decode(path("alpha.gif"));
        ASSERT_EQ(written.gif.images.size(), 4u);
        expectTransparency(written.gif, 0, few, true);
        expectTransparency(written.gif, 1, grey, true);
        expectTransparency(written.gif, 2, many, false);
        // The opaque frame shares the transparent colour, which none of its pixels takes.
        const std::uint8_t unused = std::uint8_t(written.gif.images[3].control->TransparentColor);
        for (std::uint8_t index : written.gif.images[3].indices) EXPECT_NE(index, unused);
    }
    // Pixels of the --transparent colour show as transparent too.
    ASSERT_EQ(run({"-o", path("red.gif"), few.file, "--transparent", "#ff0000"}), 0);
    AlphaFrame red = few;
    for (std::size_t i = 0; i < red.clear.size(); ++i) red.clear[i] = red.clear[i] || red.colors[i].r == 255;
    expectTransparency(decode(path("red.gif")).gif, 0, red, true);
}

TEST_F(GifCommandTest, AlphaFramesOfOneMapShareIt) {
    const AlphaFrame few = fewColours(path("few.png")), grey = greyAlpha(path("grey.png"));
    const tarvex_test::ProgramRun shared =
        tarvex_test::runTool({"gif", "-o", path("shared.gif"), few.file, few.file, "--background", "#00c800"});
    EXPECT_EQ(shared.status, 0) << shared.err;
    EXPECT_EQ(shared.err, "");
    const Decoded written = decode(path("shared.gif"));
    ASSERT_EQ(written.gif.images.size(), 2u);
    EXPECT_EQ(written.gif.globalMap.size(), 4u);
    for (std::size_t k = 0; k < 2; ++k) {
        EXPECT_TRUE(written.gif.images[k].localMap.empty()) << "frame " << k;
        expectTransparency(written.gif, k, few, true);
    }
    ASSERT_EQ(run({"-o", path("own.gif"), few.file, grey.file}), 0);
    const Decoded own = decode(path("own.gif"));
    EXPECT_TRUE(own.gif.globalMap.empty());
    expectTransparency(own.gif, 0, few, true);
    expectTransparency(own.gif, 1, grey, true);
}

// A GIF input's transparent pixels stay transparent, and its other pixels
// keep their colours, alone or beside a PNG's alpha.
TEST_F(GifCommandTest, GifInputsKeepTheirTransparency) {
    const std::string grey = png("g.png", kW, kH, 1, 2);
    ASSERT_EQ(run({"-o", path("clear.gif"), grey, "--transparent", "0"}), 0);
    const Decoded clear = decode(path("clear.gif"));
    const int key = clear.gif.images.at(0).control->TransparentColor;
    ASSERT_GE(key, 0);
    AlphaFrame asWritten;
    for (std::size_t i = 0; i < clear.gif.images[0].indices.size(); ++i)
        asWritten.clear.push_back(clear.gif.images[0].indices[i] == key),
            asWritten.colors.push_back(clear.gif.color(0, i));
    const AlphaFrame few = fewColours(path("few.png"));
    for (const std::vector<std::string> &more : {std::vector<std::string>{}, std::vector<std::string>{few.file}}) {
        std::vector<std::string> args{"-o", path("again.gif"), path("clear.gif"), "--dither", "none"};
        args.insert(args.end(), more.begin(), more.end());
        ASSERT_EQ(run(args), 0);
        const Decoded again = decode(path("again.gif"));
        ASSERT_EQ(again.gif.images.size(), 1 + more.size());
        expectTransparency(again.gif, 0, asWritten, true);
        // Whole pictures: nothing that one frame leaves shows through the next.
        for (const auto &image : again.gif.images) EXPECT_EQ(image.control->DisposalMode, 2);
    }
    ASSERT_EQ(run({"-o", path("kept.gif"), path("clear.gif"), "--disposal", "1"}), 0);
    EXPECT_EQ(decode(path("kept.gif")).gif.images.at(0).control->DisposalMode, 1);
}

// Many pictures carry an alpha channel that hides nothing: they are written
// as the same pictures without it.
TEST_F(GifCommandTest, AnAlphaChannelThatHidesNoPixelIsIgnored) {
    const auto colour = [](int i, int k) { return std::uint16_t((i * 7 + k * 50) % 256); };
    const std::string rgb = writeTestPng(path("rgb.png"), kW, kH, 3, 8, colour);
    const std::string rgba = writeTestPng(path("rgba.png"), kW, kH, 4, 8, [&](int i, int k) {
        return k == 3 ? std::uint16_t(128 + i % 128) : colour(i, k);
    }, true);
    ASSERT_EQ(run({"-o", path("rgb.gif"), rgb, rgb}), 0);
    ASSERT_EQ(run({"-o", path("rgba.gif"), rgba, rgb}), 0);
    EXPECT_EQ(readFileBytes(path("rgba.gif")), readFileBytes(path("rgb.gif")));
}

TEST_F(GifCommandTest, AlphaAgainstAPaletteTakesAnEntryAfterIt) {
    const AlphaFrame few = fewColours(path("few.png"));
    ASSERT_EQ(run({"-o", path("pal.gif"), few.file, "--palette", "#ff0000,#00c800,#0a141e"}), 0);
    const Decoded written = decode(path("pal.gif"));
    expectTransparency(written.gif, 0, few, true);
    EXPECT_EQ(written.gif.images[0].control->TransparentColor, 3);
    // An alpha channel that hides nothing needs no entry: a full map will do.
    const std::string opaque = writeTestPng(path("opaque.png"), kW, kH, 4, 8, [](int i, int k) {
        return std::uint16_t(k == 3 ? 128 + i % 128 : i * 3 % 256);
    }, true);
    ASSERT_EQ(run({"-o", path("full.gif"), opaque, "--palette", "332"}), 0);
    const Decoded full = decode(path("full.gif"));
    EXPECT_EQ(full.gif.globalMap.size(), 256u);
    EXPECT_TRUE(!full.gif.images[0].control || full.gif.images[0].control->TransparentColor < 0);
    const std::string message =
        cliFailure([&] { run({"-o", path("x.gif"), opaque, few.file, "--palette", "332"}); }, 1);
    EXPECT_NE(message.find("332: 256 colours leave no entry for the transparent pixels of frame 2"),
              std::string::npos)
        << message;
    EXPECT_FALSE(std::filesystem::exists(path("x.gif")));
}

TEST_F(GifCommandTest, RefusesWithAClearMessage) {
    const std::string a = png("a.png", 6, 4, 3, 1), b = png("b.png", 4, 6, 3, 1);
    struct Case {
        std::vector<std::string> args;
        int status;
        const char *message;
    };
    const Case cases[] = {
        {{"-o", path("x.gif"), a, b}, 1, "every frame must have one size"},
        {{"-o", path("x.gif"), a, "--delay", "1,2"}, 2, "give one or one per frame"},
        {{"-o", path("x.gif"), a, "--dither", "fs"}, 2, "--dither is none, floyd-steinberg"},
        {{"-o", path("x.gif"), a, "--loop", "70000"}, 2, "from 0 to 65535"},
        {{"-o", path("x.gif"), a, "--disposal", "4"}, 2, "modes 0 to 3"},
        {{"-o", path("x.gif"), a, "--disposal", "0,1e308"}, 2, "modes 0 to 3, not '1e308'"},
        {{"-o", path("x.gif"), a, "--transparent", "#010203"}, 1, "not in the palette"},
        {{a}, 2, "-o"},
        {{"-o", path("x.gif")}, 2, "at least one input"},
        {{"-o", path("no-such-dir/x.gif"), a}, 1, "cannot write"},
    };
    for (const Case &c : cases) {
        const std::string message = cliFailure([&] { run(c.args); }, c.status);
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
    }
}

}  // namespace
