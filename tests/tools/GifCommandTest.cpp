// `tarvex gif`: frames from PNG and GIF files into one GIF file.
#include <gif_lib.h>
#include <turbojpeg.h>

#include <set>

#include "BinaryFiles.h"
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

struct Decoded {
    int frames = 0, width = 0, height = 0;
    std::vector<int> delays;
    std::set<std::uint32_t> colors;  // of every pixel of every frame
    std::vector<std::uint32_t> globalMap;
};

Decoded decode(const std::string &file) {
    Decoded result;
    int error = 0;
    GifFileType *gif = DGifOpenFileName(file.c_str(), &error);
    if (gif == nullptr || DGifSlurp(gif) != GIF_OK) {
        ADD_FAILURE() << "giflib cannot read " << file;
        return result;
    }
    const auto packed = [](const GifColorType &c) {
        return std::uint32_t(c.Red) << 16 | std::uint32_t(c.Green) << 8 | c.Blue;
    };
    result.frames = gif->ImageCount, result.width = gif->SWidth, result.height = gif->SHeight;
    for (int i = 0; gif->SColorMap && i < gif->SColorMap->ColorCount; ++i)
        result.globalMap.push_back(packed(gif->SColorMap->Colors[i]));
    for (int k = 0; k < gif->ImageCount; ++k) {
        const SavedImage &image = gif->SavedImages[k];
        const ColorMapObject *map = image.ImageDesc.ColorMap ? image.ImageDesc.ColorMap : gif->SColorMap;
        for (int i = 0; i < image.ImageDesc.Width * image.ImageDesc.Height; ++i)
            result.colors.insert(packed(map->Colors[image.RasterBits[i]]));
        GraphicsControlBlock control;
        DGifSavedExtensionToGCB(gif, k, &control);
        result.delays.push_back(control.DelayTime);
    }
    DGifCloseFile(gif, &error);
    return result;
}

TEST_F(GifCommandTest, WritesPngAndGifFramesInOrder) {
    const std::string first = png("a.png", 6, 4, 3, 1), grey = png("g.png", 6, 4, 1, 2);
    ASSERT_EQ(run({"-o", path("two.gif"), first, grey, "--delay", "0.5,0.25", "--loop", "2"}), 0);
    const Decoded two = decode(path("two.gif"));
    EXPECT_EQ(two.frames, 2);
    EXPECT_EQ(two.width, 6);
    EXPECT_EQ(two.delays, (std::vector<int>{50, 25}));
    // Few colours: the frames come back exactly, and again when re-encoded.
    ASSERT_EQ(run({"-o", path("again.gif"), path("two.gif"), first, "--dither", "none"}), 0);
    const Decoded again = decode(path("again.gif"));
    EXPECT_EQ(again.frames, 3);
    EXPECT_EQ(again.colors, two.colors);
    EXPECT_EQ(again.delays, (std::vector<int>{10, 10, 10}));
}

TEST_F(GifCommandTest, ReadsJpegFramesInGreyAndColour) {
    const std::string colour = jpeg("c.jpg", 9, 5, 3), grey = jpeg("g.jpg", 9, 5, 1);
    ASSERT_EQ(run({"-o", path("jpeg.gif"), colour, grey}), 0);
    const Decoded written = decode(path("jpeg.gif"));
    EXPECT_EQ(written.frames, 2);
    EXPECT_EQ(written.width, 9);
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
    EXPECT_EQ(written.frames, 1);
    EXPECT_EQ(written.globalMap, (std::vector<std::uint32_t>{0, 0xFFFFFF, 0xFF0000, 0}));
    for (std::uint32_t c : written.colors) EXPECT_TRUE(c == 0 || c == 0xFFFFFF || c == 0xFF0000) << c;
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
