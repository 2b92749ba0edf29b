// Every form that --palette takes, read the way the commands read it.
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "NamedPalettes.h"
#include "PaletteFiles.h"
#include "PluginDiscovery.h"
#include "Support.h"
#include "ToolRun.h"

using namespace tarvex_cli;
using namespace tarvex_test;

namespace {

std::vector<std::vector<double>> valuesOf(const std::vector<DitherColor> &colors) {
    std::vector<std::vector<double>> values;
    for (const DitherColor &color : colors) values.push_back(color.values);
    return values;
}

class PaletteArgument : public ScratchTest {
protected:
    void SetUp() override { setPluginPath(TARVEX_PLUGIN_PATH); }

    std::string sampleGif() {
        EXPECT_EQ(runTool({"sample-gif", path("a.gif")}).status, 0);
        return path("a.gif");
    }
};

}  // namespace

TEST(NamedPalettes, SizesEndsAndSteps) {
    const struct {
        const char *name;
        std::size_t size;
        std::vector<double> first, second, last;
    } cases[] = {
        {"bw", 2, {0}, {255}, {255}},
        {"grey4", 4, {0}, {85}, {255}},
        {"gray16", 16, {0}, {17}, {255}},
        {"grey256", 256, {0}, {1}, {255}},
        {"web", 216, {0, 0, 0}, {0, 0, 51}, {255, 255, 255}},
        {"332", 256, {0, 0, 0}, {0, 0, 85}, {255, 255, 255}},
    };
    for (const auto &c : cases) {
        const auto palette = namedPalette(c.name);
        ASSERT_TRUE(palette) << c.name;
        const auto values = valuesOf(*palette);
        EXPECT_EQ(values.size(), c.size) << c.name;
        EXPECT_EQ(values[0], c.first) << c.name;
        EXPECT_EQ(values[1], c.second) << c.name;
        EXPECT_EQ(values.back(), c.last) << c.name;
    }
    // Red and green take eight levels in 332: 255 * 1 / 7 rounds to 36.
    EXPECT_EQ(valuesOf(*namedPalette("332"))[32], (std::vector<double>{36, 0, 0}));
    EXPECT_FALSE(namedPalette("grey8"));
}

TEST_F(PaletteArgument, GifPalettesAndWhatTheToolPrintsOfThem) {
    const std::string gif = sampleGif();
    const std::vector<std::vector<double>> global{{128, 128, 128}, {255, 255, 255}, {220, 30, 30}, {30, 60, 200}};
    const std::vector<std::vector<double>> local{{0, 0, 0}, {255, 200, 0}};
    EXPECT_EQ(valuesOf(readDitherPalette(gif)), global);
    EXPECT_EQ(valuesOf(readDitherPalette(gif + ":5")), local);   // its own palette
    EXPECT_EQ(valuesOf(readDitherPalette(gif + ":2")), global);  // the global one it draws with
    EXPECT_NE(cliFailure([&] { readDitherPalette(gif + ":6"); }, 1).find("has no frame 6"), std::string::npos);

    // `tarvex palette` prints the global palette first, then the local ones:
    // reading its text back gives the global palette.
    const ProgramRun printed = runTool({"palette", gif});
    ASSERT_EQ(printed.status, 0);
    std::ofstream(path("printed.txt")) << printed.out;
    EXPECT_EQ(valuesOf(readDitherPalette(path("printed.txt"))), global);
}

TEST_F(PaletteArgument, ImagesGiveTheirDistinctColoursUpToALimit) {
    const std::string few = writeTestPng(path("few.png"), 4, 1, 3, 8, [](int i, int k) { return i % 2 ? 200 : k; });
    EXPECT_EQ(valuesOf(readDitherPalette(few)), (std::vector<std::vector<double>>{{0, 1, 2}, {200, 200, 200}}));
    // 65,537 colours: one more than a palette holds.
    const std::string many =
        writeTestPng(path("many.png"), 65537, 1, 3, 16, [](int i, int k) { return k == 0 ? i % 65536 : i / 65536; });
    EXPECT_NE(cliFailure([&] { readDitherPalette(many); }, 1).find("more than 65,536 colours"), std::string::npos);
    const std::string limit =
        writeTestPng(path("limit.png"), 65536, 1, 1, 16, [](int i, int) { return std::uint16_t(i); });
    EXPECT_EQ(readDitherPalette(limit).size(), 65536u);
}

TEST_F(PaletteArgument, FilesThatHoldNoColours) {
    std::ofstream(path("binary.dat"), std::ios::binary) << std::string("\0\1\2\3", 4);
    EXPECT_NE(cliFailure([&] { readDitherPalette(path("binary.dat")); }, 1)
                  .find("neither an image the tool reads nor a text file of colours"),
              std::string::npos);
    std::ofstream(path("empty.txt")) << "\n\n";
    EXPECT_NE(cliFailure([&] { readDitherPalette(path("empty.txt")); }, 2).find("no colours"), std::string::npos);
    EXPECT_NE(cliFailure([&] { readDitherPalette(path("a.png") + ":2"); }, 1).find("cannot open"), std::string::npos);
    // A file that never ends is looked at, not read to its end.
    EXPECT_NE(cliFailure([&] { readDitherPalette("/dev/zero"); }, 1).find("nor a text file"), std::string::npos);
    std::ofstream(path("long.txt")) << std::string((std::size_t{64} << 20) + 1, '\n');
    EXPECT_NE(cliFailure([&] { readDitherPalette(path("long.txt")); }, 1).find("more than 64 MiB of text"),
              std::string::npos);
}

TEST_F(PaletteArgument, ChannelCountsAreCheckedAndGreyFitsRgb) {
    const std::string grey = writeTestPng(path("g.png"), 4, 4, 1, 8, [](int i, int) { return std::uint16_t(i * 16); });
    const std::string rgb = writeTestPng(path("c.png"), 4, 4, 3, 8, [](int i, int k) { return std::uint16_t(i * 10 + k); });
    expectToolMessage(runTool({"dither", grey, "-o", path("x.png"), "--palette", "#ff0000"}), 1,
                      "need 1 channel like the image, one has 3");
    EXPECT_EQ(runTool({"dither", rgb, "-o", path("y.png"), "--palette", "grey16"}).status, 0);
    EXPECT_EQ(runTool({"dither", grey, "-o", path("z.png"), "--palette", "web"}).status, 1);
}

TEST_F(PaletteArgument, PaletteCommandSpeaksJson) {
    const ProgramRun json = runTool({"palette", "--json", sampleGif()});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(json.out, "{\n"
                        "  \"global\": [[128, 128, 128], [255, 255, 255], [220, 30, 30], [30, 60, 200]],\n"
                        "  \"frames\": [\n"
                        "    {\"frame\": 5, \"local\": [[0, 0, 0], [255, 200, 0]]}\n"
                        "  ]\n"
                        "}\n");
}
