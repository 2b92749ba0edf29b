// `tarvex frames`: which frames, under which names, and never mixed with an
// earlier run's.
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FrameSelection.h"
#include "Support.h"
#include "ToolRun.h"

using namespace tarvex_cli;
using namespace tarvex_test;

TEST(FrameSelection, RangesResolveAgainstTheFrameCount) {
    const struct {
        const char *text;
        long count;
        std::vector<long> frames;
    } cases[] = {
        {"2-5,9", 9, {2, 3, 4, 5, 9}},
        {"3-", 5, {3, 4, 5}},
        {"4,1-2,2", 5, {4, 1, 2}},  // in the order given, each once
        {"1", 1, {1}},
    };
    for (const auto &c : cases) EXPECT_EQ(selectFrames(parseFrameRanges(c.text), c.count), c.frames) << c.text;
    for (const char *bad : {"", "0", "2-1", "1,,2", "a", "-3", "1-2-3", "+2", "1.5"})
        EXPECT_THROW(parseFrameRanges(bad), std::invalid_argument) << bad;
    EXPECT_THROW(selectFrames(parseFrameRanges("2-6"), 5), std::invalid_argument);
    EXPECT_THROW(selectFrames(parseFrameRanges("6-"), 5), std::invalid_argument);
}

TEST(FrameSelection, NamePatternsMakeAndRecogniseNames) {
    const NumberedName padded("frame-%03d.png"), plain("%d%%.gif"), spaced("f%3d.png");
    EXPECT_EQ(padded(7), "frame-007.png");
    EXPECT_EQ(padded(1234), "frame-1234.png");
    EXPECT_EQ(plain(12), "12%.gif");
    EXPECT_EQ(spaced(5), "f  5.png");
    EXPECT_TRUE(padded.matches("frame-012.png"));
    EXPECT_TRUE(padded.matches("frame-9.png"));
    EXPECT_TRUE(spaced.matches("f  5.png"));
    for (const char *other : {"frame-.png", "frame-01a.png", "frame-001.png.bak", "xframe-001.png"})
        EXPECT_FALSE(padded.matches(other)) << other;
    for (const char *bad : {"frame.png", "%s.png", "%d-%d.png", "a/%d.png", "%x.png", "100%.png", "%123d.png"})
        EXPECT_THROW(NumberedName{bad}, std::invalid_argument) << bad;
}

namespace {

class FramesCommand : public ScratchTest {
protected:
    void SetUp() override { ASSERT_EQ(runTool({"sample-gif", path("a.gif")}).status, 0); }

    ProgramRun frames(std::vector<std::string> more) {
        more.insert(more.begin(), {"frames", path("a.gif"), "-o", path("out")});
        return runTool(more);
    }

    std::string out(const std::string &name) const { return path("out/" + name); }
};

}  // namespace

TEST_F(FramesCommand, WritesOnlyTheNamesItReports) {
    const ProgramRun run = frames({"--frames", "2-3,5", "--name", "still-%02d.png"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, out("still-02.png") + "\n" + out("still-03.png") + "\n" + out("still-05.png") + "\n");
    std::vector<std::string> written;
    for (const auto &entry : std::filesystem::directory_iterator(path("out")))
        written.push_back(entry.path().filename().string());
    std::sort(written.begin(), written.end());
    EXPECT_EQ(written, (std::vector<std::string>{"still-02.png", "still-03.png", "still-05.png"}));
    // The same frames as written one at a time.
    ASSERT_EQ(runTool({"frames", path("a.gif"), "-o", path("one"), "--frame", "3"}).status, 0);
    EXPECT_EQ(fileContents(out("still-03.png")), fileContents(path("one/frame-003.png")));
}

TEST_F(FramesCommand, APrefixChoosesTheFormatAndIsNoPartOfTheNames) {
    const ProgramRun run = frames({"--frame", "2", "--name", "png:still-%d.gif"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, out("still-2.gif") + "\n");
    ASSERT_EQ(runTool({"frames", path("a.gif"), "-o", path("one"), "--frame", "2"}).status, 0);
    EXPECT_EQ(fileContents(out("still-2.gif")), fileContents(path("one/frame-002.png")));
    EXPECT_FALSE(std::filesystem::exists(out("png:still-2.gif")));
}

TEST_F(FramesCommand, RefusesToMixWithAnEarlierRun) {
    ASSERT_EQ(frames({}).status, 0);
    // The same run again replaces its own files; a smaller one would leave
    // frames 3 to 5 of the first run beside its own.
    EXPECT_EQ(frames({}).status, 0);
    const ProgramRun fewer = frames({"--frames", "1-2"});
    expectToolMessage(fewer, 1, "frame-003.png and 2 other files of an earlier run");
    EXPECT_EQ(fewer.out, "");
    // Another pattern in the same directory is another set of files.
    EXPECT_EQ(frames({"--frames", "1-2", "--name", "other-%d.png"}).status, 0);
    // Files that the pattern does not make are no concern.
    std::ofstream(out("notes.txt")) << "x";
    EXPECT_EQ(frames({}).status, 0);
}

TEST_F(FramesCommand, RefusalsOfTheCommandLine) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> usage = {
        {{"--frames", "3-1"}, "runs backwards"},
        {{"--frames", "1", "--frame", "2"}, "--frame or --frames, not both"},
        {{"--name", "frame.png"}, "needs a number"},
        {{"--frame", "0"}, "from 1 to"},
    };
    for (const auto &[args, message] : usage) expectToolMessage(frames(args), 2, message);
    expectToolMessage(frames({"--frames", "4-6"}), 1, "there is no frame 6 (5 frames)");
    EXPECT_FALSE(std::filesystem::exists(out("frame-004.png")));
}
