// The tool as users run it: command lines in, output and exit status out.

#include <gtest/gtest.h>

#include <filesystem>

#include "PluginDiscovery.h"
#include "Support.h"
#include "ToolRun.h"

using namespace tarvex_cli;
using namespace tarvex_test;

namespace {

class ToolTest : public ScratchTest {
protected:
    // A 2 x 1 RGB image: one dark, one light pixel.
    std::string twoPixelPng() const {
        return writeTestPng(path("two.png"), 2, 1, 3, 8, [](int i, int k) { return std::uint16_t(i * 200 + 20 + k * 10); });
    }
};

const char *const kCleanBooks =
    "books: live images 0, raw arrays 0, tensors 0; strings issued 1, released 1, outstanding 0; "
    "bad releases 0, bad handles 0; messages 0\n";

}  // namespace

TEST_F(ToolTest, VersionAndHelp) {
    const std::string version = runTool({"--version"}, PluginArgument::Omitted).out;
    EXPECT_EQ(version.rfind("tarvex " TARVEX_EXPECTED_VERSION "\n", 0), 0u) << version;
    for (const char *library : {"\ngiflib 5.", "\nlibspng 0.", "\nlibjpeg-turbo "})
        EXPECT_NE(version.find(library), std::string::npos) << library;
    // Every command explains itself, usage line first, without loading the plug-in.
    const ProgramRun overview = runTool({"--help"}, PluginArgument::Omitted);
    EXPECT_EQ(overview.status, 0);
    EXPECT_NE(runTool({"call", "--help"}, PluginArgument::Omitted).out.find("raw-image:FILE:OPTIONS"), std::string::npos);
    for (const Command &command : commands()) {
        const ProgramRun help = runTool({command.name, "--help"}, PluginArgument::Omitted);
        EXPECT_EQ(help.status, 0) << command.name;
        EXPECT_EQ(help.out.rfind(std::string("usage: tarvex ") + command.name, 0), 0u) << help.out;
        EXPECT_NE(overview.out.find(std::string("\n  ") + command.name + " "), std::string::npos) << command.name;
    }
}

TEST_F(ToolTest, BadCommandLinesSayWhatIsWrongAndExitWithTwo) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "no command given"},
        {{"frobnicate"}, "unknown command 'frobnicate'; see tarvex --help"},
        {{"--frob", "call"}, "unknown option --frob"},
        {{"call"}, "name of an export"},
        {{"call", "UniqueColors", "photo.png"}, "argument 1 'photo.png': not a value"},
        {{"call", "UniqueColors", "png:x.png", "raw:uint8:{1,2"}, "argument 2 'raw:uint8:{1,2'"},
        {{"call", "ReadPalettes", "{\"a.gif\""}, "is not an expression"},
        // The plug-in would follow a number in a string slot as a pointer.
        {{"call", "ReadOneFrame", "5", "1"}, "argument 1 '5': ReadOneFrame takes a string there (str:TEXT)"},
        {{"call", "WriteFrames", "png:x.png", "str:a.gif", "true"}, "argument 3 'true': WriteFrames takes a string"},
        // A file that never ends is read only as far as the dimensions reach.
        {{"call", "UniqueColors", "raw:uint8:@/dev/zero:dims=2x3"}, "/dev/zero holds more than 6 bytes"},
    };
    for (const auto &[args, message] : cases) {
        const ProgramRun run = runTool(args);
        expectToolMessage(run, 2, message);
        EXPECT_EQ(run.out, "");
    }
    // Without dims the length is the dimension, so the memory budget bounds the read.
    setenv("TARVEX_MEMORY_BUDGET", "1000", 1);
    const ProgramRun endless = runTool({"call", "UniqueColors", "raw:uint8:@/dev/zero"});
    unsetenv("TARVEX_MEMORY_BUDGET");
    expectToolMessage(endless, 2, "/dev/zero holds more than 1000 bytes, more than the memory budget");
    EXPECT_EQ(runTool({"--plugin"}, PluginArgument::Omitted).status, 2);
    expectToolMessage(runTool({"--plugin", path("libMissing.so"), "call", "StringSeparator"}, PluginArgument::Omitted),
                      1, "cannot load the plug-in " + path("libMissing.so"));
}

TEST(PluginDiscovery, ExplicitThenEnvironmentThenBesideTheTool) {
    const std::string buildTree = std::filesystem::path(TARVEX_PLUGIN_PATH).parent_path().parent_path().string();
    PluginSearch search{std::nullopt, std::nullopt, buildTree + "/tools", "lib"};
    EXPECT_EQ(locatePlugin(search), std::filesystem::path(TARVEX_PLUGIN_PATH).lexically_normal().string());
    search.environmentPath = "/env/libTarvex.so";
    EXPECT_EQ(locatePlugin(search), "/env/libTarvex.so");
    search.explicitPath = "/given/libTarvex.so";
    EXPECT_EQ(locatePlugin(search), "/given/libTarvex.so");

    const std::string problem = cliFailure([] { locatePlugin({std::nullopt, std::nullopt, "/nonexistent/bin", "lib64"}); }, 1);
    EXPECT_NE(problem.find("/nonexistent/lib64/libTarvex.so"), std::string::npos);
    EXPECT_NE(problem.find("--plugin PATH"), std::string::npos);
}

TEST_F(ToolTest, DitherWithARawArrayPalette) {
    const std::string png = "png:" + twoPixelPng();
    const std::string out = path("dithered.png");
    ProgramRun run = runTool({"call", "DitherImage", png, "raw:uint8:{{0,0,0},{255,255,255}}", "str:None", "true", "false",
                        "--out", out, "--books"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "code: 0\n"
                       "result: Image[{2, 1}, \"Byte\", Channels -> 3, ColorSpace -> \"RGB\", Interleaved -> True, "
                       "Alpha -> False]\n"
                       "saved: " + out + " (read back with png:" + out + ")\n" + kCleanBooks);
    EXPECT_EQ(readTestPng(out).samples, (std::vector<std::uint16_t>{0, 0, 0, 255, 255, 255}));
}

TEST_F(ToolTest, AFailedCallExitsWithOneAndSaysSo) {
    const std::string png = "png:" + twoPixelPng(), missing = path("missing.gif");
    const std::string notWritten = "result: not written\n";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        // A 16-bit colour map for an 8-bit image.
        {{"DitherImage", png, "raw:uint16:{{0,0,0},{65535,65535,65535}}", "str:None", "true", "false", "--books"},
         "code: -14\n" + notWritten + kCleanBooks},
        {{"ClearCache", "str:a.gif", "--argc", "0"}, "code: 6\n" + notWritten},
        {{"--no-init", "DitherImage", png, "raw:uint8:{{0,0,0}}", "str:None", "true", "false"},
         "code: -14\n" + notWritten},
        // A link export takes an expression or a bare file name.
        {{"ReadFileMetadata", missing}, "code: -2\n" + notWritten},
        {{"ReadFileMetadata", "{\"" + missing + "\"}"}, "code: -2\n" + notWritten},
        {{"ReadFileMetadata", "List[\"" + missing + "\"]"}, "code: -2\n" + notWritten},
    };
    for (const auto &[args, out] : cases) {
        std::vector<std::string> command{"call"};
        command.insert(command.end(), args.begin(), args.end());
        const ProgramRun run = runTool(command);
        EXPECT_EQ(run.status, 1) << run.err;
        EXPECT_EQ(run.out, out);
    }
}
