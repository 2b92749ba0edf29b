// The dither and sample-image commands as users run them.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Support.h"
#include "ToolRun.h"

namespace {

using namespace tarvex_test;
using Colors = std::set<std::vector<std::uint16_t>>;

class DitherCommand : public ScratchTest {
protected:
    // The exit status; the outputs are kept in output_ and errors_.
    int tool(const std::vector<std::string> &args) {
        const ProgramRun run = runTool(args);
        errors_ = run.err;
        output_ = run.out;
        return run.status;
    }

    std::string samplePicture(int width, int height) {
        EXPECT_EQ(tool({"sample-image", path("in.png"), "--width", std::to_string(width), "--height",
                        std::to_string(height)}),
                  0)
            << errors_;
        return path("in.png");
    }

    std::string errors_, output_;
};

TEST_F(DitherCommand, MapsToTheGivenColoursOnly) {
    const std::string picture = samplePicture(40, 30);
    const Colors palette = {{0, 0, 0}, {255, 255, 255}, {255, 0, 0}, {0, 128, 0}};
    for (const char *method : {"none", "floyd-steinberg"}) {
        ASSERT_EQ(tool({"dither", picture, "-o", path("out.png"), "--palette", "#000000,#ffffff,#ff0000,#008000",
                        "--method", method}),
                  0)
            << errors_;
        for (const auto &color : readTestPng(path("out.png")).colors()) EXPECT_TRUE(palette.count(color)) << method;
    }
}

// A palette image holds every colour of its own dithering, which therefore
// comes back unchanged; text files take both colour forms.
TEST_F(DitherCommand, PalettesFromFiles) {
    const std::string picture = samplePicture(40, 30);
    std::ofstream(path("palette.txt")) << "#102030\n\n255,255,255\n  0,0,0  \n";
    ASSERT_EQ(tool({"dither", picture, "-o", path("once.png"), "--palette", path("palette.txt")}), 0) << errors_;
    EXPECT_EQ(readTestPng(path("once.png")).colors().size(), 3u);
    ASSERT_EQ(tool({"dither", path("once.png"), "-o", path("twice.png"), "--palette", path("once.png")}), 0)
        << errors_;
    EXPECT_EQ(fileContents(path("twice.png")), fileContents(path("once.png")));

    std::ofstream(path("bad.txt")) << "#000000\n1,2,x\n";
    expectToolMessage(runTool({"dither", picture, "-o", path("x.png"), "--palette", path("bad.txt")}), 1, "bad.txt:2");
}

TEST_F(DitherCommand, RealSamplesThroughRawFiles) {
    const std::vector<float> ramp = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f, 1.0f};
    std::ofstream(path("ramp.raw"), std::ios::binary)
        .write(reinterpret_cast<const char *>(ramp.data()), ramp.size() * sizeof(float));
    const std::string layout = "type=real32,width=6,height=1,channels=1";
    ASSERT_EQ(tool({"dither", path("ramp.raw"), "--layout", layout, "-o", path("out.raw"), "--palette", "0;1",
                    "--method", "none"}),
              0)
        << errors_;
    EXPECT_NE(output_.find(layout), std::string::npos);
    const std::string out = fileContents(path("out.raw"));
    ASSERT_EQ(out.size(), ramp.size() * sizeof(float));
    std::vector<float> mapped(ramp.size());
    std::memcpy(mapped.data(), out.data(), out.size());
    EXPECT_EQ(mapped, (std::vector<float>{0, 0, 0, 1, 1, 1}));

    // Raw samples never go into a file whose name promises a picture.
    for (const char *name : {"out.png", "OUT.GIF"}) {
        expectToolMessage(runTool({"dither", path("ramp.raw"), "--layout", layout, "-o", path(name), "--palette", "0;1"}),
                          2, "with --layout the output is raw samples");
        expectToolMessage(runTool({"quantize", path("ramp.raw"), "--layout", layout, "-o", path(name)}), 2,
                          "with --layout the output is raw samples");
        EXPECT_FALSE(std::filesystem::exists(path(name))) << name;
    }
}

TEST_F(DitherCommand, RefusesWhatCannotBeDithered) {
    const std::string picture = samplePicture(8, 8), out = path("x.png");
    expectToolMessage(runTool({"dither", picture, "-o", out, "--palette", "#0000,#ffff"}), 1, "3 channels");
    EXPECT_EQ(tool({"dither", picture, "-o", out, "--palette", "#000000", "--method", "fs"}), 2);
    EXPECT_EQ(tool({"dither", picture, "--palette", "#000000"}), 2);
    EXPECT_EQ(tool({"dither", picture, "-o", out, "--palette", "300,0,0"}), 1);
}

}  // namespace

// Users of either habit name a sample's output alone or with -o; both
// samples are written without a word, as the guide shows them.
TEST_F(DitherCommand, SampleCommandsTakeTheOutputAloneOrWithDashO) {
    for (const char *command : {"sample-image", "sample-gif"}) {
        const std::string ext = std::strcmp(command, "sample-gif") == 0 ? ".gif" : ".png";
        const std::string alone = path("alone" + ext), named = path("named" + ext);
        const ProgramRun run = runTool({command, alone});
        ASSERT_EQ(run.status, 0) << command;
        EXPECT_EQ(run.out, "") << command;
        ASSERT_EQ(runTool({command, "-o", named}).status, 0) << command;
        EXPECT_EQ(fileContents(named), fileContents(alone)) << command;
        expectToolMessage(runTool({command, "-o", named, alone}), 2, "once");
    }
    // A photo has too many colours for a GIF; the refusal names the stream.
    expectToolMessage(runTool({"sample-image", "-o", "gif:-", "--width", "32", "--height", "32"}), 1,
                      "standard output: the picture has more than 256 colours");
}
