// The answers of the metadata, palette and raster readers, the codes of all
// readers, and the rules of the decoded-file cache.
#include <filesystem>

#include <gtest/gtest.h>

#include "ImportCalls.h"
#include "RawGif.h"

namespace gif_test {
namespace {

class Readers : public ::testing::Test {
    tarvex_test::HostBooksGuard books;
};

std::string answer(const char *exportName, const std::string &path) {
    int code = 99;
    std::string text = linkAnswer(exportName, path, &code);
    EXPECT_EQ(code, 0) << exportName;
    return text;
}

std::string twoFrameFile() {
    Image first = solid(0, 0, 4, 2, 1);
    first.loopBlock = true;
    first.comments = {std::vector<std::string>{"hel", "lo"}};
    first.control = Control{0, 1, -1, false};
    Image second = solid(1, 0, 2, 1, 2);
    second.localColors = ColorTable{kBlack, kWhite, kYellow, kCyan};
    second.control = Control{7, 2, 2, true};
    return GifBuilder(4, 2)
        .globalColors({kBlack, kRed, kGreen, kBlue}, 2)
        .image(first)
        .image(second)
        .trailingComment({"a\xff" "b"})
        .write("two-frames.gif");
}

TEST_F(Readers, AnswerWithTheExactExpressions) {
    const std::string path = twoFrameFile();
    EXPECT_EQ(answer("ReadFileMetadata", path),
              "{\"ImageSize\" -> {4, 2}, \"ImageCount\" -> 2, \"Background\" -> RGBColor[0., 1., 0.], "
              "\"AnimationRepetitions\" -> Infinity, \"Comments\" -> {\"hel\", \"a\xef\xbf\xbd" "b\"}}");
    EXPECT_EQ(answer("ReadFrameMetadata", path),
              "{{\"ImageSize\" -> {4, 2}, \"Channels\" -> 3, \"ImageOffset\" -> {0, 0}, "
              "\"TransparentColor\" -> None, \"DisposalOperation\" -> \"None\", "
              "\"DisplayDurations\" -> Infinity, \"UserInputFlag\" -> False}, "
              "{\"ImageSize\" -> {2, 1}, \"Channels\" -> 4, \"ImageOffset\" -> {1, 0}, "
              "\"TransparentColor\" -> RGBColor[1., 1., 0.], \"DisposalOperation\" -> \"Background\", "
              "\"DisplayDurations\" -> 0.07, \"UserInputFlag\" -> True}}");
    EXPECT_EQ(answer("ReadPalettes", path),
              "{None, {{0, 0, 0}, {255, 255, 255}, {255, 255, 0}, {0, 255, 255}}}");
    EXPECT_EQ(answer("ReadRasterBits", path), "{{{1, 1, 1, 1}, {1, 1, 1, 1}}, {{2, 2}}}");

    const Tensor palette = readGlobalPalette(path);
    ASSERT_EQ(palette.code, 0);
    EXPECT_EQ(palette.dimensions, (std::vector<long>{4, 3}));
    EXPECT_EQ(palette.values, (std::vector<long>{0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255}));
}

TEST_F(Readers, ReportRepetitionsFromTheLastLoopBlock) {
    const auto repetitions = [](const std::string &path) {
        const std::string text = answer("ReadFileMetadata", path);
        const std::size_t at = text.find("\"AnimationRepetitions\" -> ");
        return text.substr(at + 26, text.find(',', at) - at - 26);
    };
    const std::vector<std::uint8_t> one{0};
    EXPECT_EQ(repetitions(RawGif(1, 1, {kRed, kGreen}).image(0, 0, 1, 1, one).trailer().write("r1.gif")), "1");
    EXPECT_EQ(repetitions(RawGif(1, 1, {kRed, kGreen})
                              .application("NETSCAPE2.0", {std::string("\x01\x05\x00", 3)})
                              .application("ANYTHING!!!", {std::string("\x01\x02\x00", 3)})
                              .image(0, 0, 1, 1, one)
                              .trailer()
                              .write("r3.gif")),
              "3");
    // A sub-block too short to hold a count is not a loop block.
    EXPECT_EQ(repetitions(RawGif(1, 1, {kRed, kGreen})
                              .image(0, 0, 1, 1, one)
                              .application("NETSCAPE2.0", {std::string("\x01")})
                              .trailer()
                              .write("short.gif")),
              "1");
}

TEST_F(Readers, DescribeAFileWithoutGlobalColors) {
    const std::string path = RawGif(2, 1, {}, 0)
                                 .comment({"only"})
                                 .image(0, 0, 2, 1, {0, 1}, {kRed, kGreen})
                                 .trailer()
                                 .write("no-global.gif");
    EXPECT_EQ(answer("ReadFileMetadata", path),
              "{\"ImageSize\" -> {2, 1}, \"ImageCount\" -> 1, \"Background\" -> None, "
              "\"AnimationRepetitions\" -> 1, \"Comments\" -> \"only\"}");
    const Tensor palette = readGlobalPalette(path);
    EXPECT_EQ(palette.dimensions, (std::vector<long>{0}));
    EXPECT_TRUE(palette.values.empty());
}

TEST_F(Readers, TreatABackgroundIndexPastThePaletteAsBlack) {
    const std::string path =
        RawGif(2, 1, {kRed, kGreen}, 2).image(0, 0, 1, 1, {1}).trailer().write("bg-past.gif");
    EXPECT_NE(answer("ReadFileMetadata", path).find("\"Background\" -> RGBColor[0., 0., 0.]"),
              std::string::npos);
    EXPECT_EQ(readOneFrame(path, 1).rows(), std::vector<std::string>{"Gk"});
}

TEST_F(Readers, ReturnTheirCodes) {
    const std::string missing = scratchPath("missing.gif");
    int code = 0;
    for (const char *name : {"ReadFileMetadata", "ReadFrameMetadata", "ReadPalettes", "ReadRasterBits"}) {
        EXPECT_EQ(linkAnswer(name, missing, &code), "");
        EXPECT_EQ(code, -2) << name;
        tarvex_test::callLink(name, "{1}", &code);
        EXPECT_EQ(code, 6) << name;
        tarvex_test::callLink(name, "{\"a\", \"b\"}", &code);
        EXPECT_EQ(code, 6) << name;
    }
    EXPECT_EQ(readOneFrame(missing, 1).code, -2);
    EXPECT_EQ(readAllFrames(missing).code, -2);
    EXPECT_EQ(readGlobalPalette(missing).code, -2);
    bool removed = true;
    EXPECT_EQ(clearCache(missing, &removed), 0);
    EXPECT_FALSE(removed);  // a file that cannot be opened is not cached

    const std::string path = GifBuilder(1, 1).globalColors(kEight).image(solid(0, 0, 1, 1, 1)).write("one.gif");
    const Picture zero = readOneFrame(path, 0);
    EXPECT_EQ(zero.code, -1);
    EXPECT_FALSE(zero.written);
    EXPECT_EQ(readOneFrame(path, 1).rows(), std::vector<std::string>{"R"});
    EXPECT_EQ(readOneFrame(path, 2).code, -1);
    EXPECT_EQ(readAllFrames(path).rank, 2);  // a single frame is a 2-D image
}

TEST_F(Readers, CacheFilesByTheirExactNames) {
    const std::string path = GifBuilder(1, 1).globalColors(kEight).image(solid(0, 0, 1, 1, 1)).write("cached.gif");
    const std::string otherSpelling = (std::filesystem::path(path).parent_path() / "." / "cached.gif").string();
    ASSERT_EQ(readOneFrame(path, 0).code, -1);  // loaded before the number is checked
    ASSERT_EQ(readOneFrame(otherSpelling, 1).code, 0);

    bool removed = false;
    EXPECT_EQ(clearCache(path, &removed), 0);
    EXPECT_TRUE(removed);
    EXPECT_EQ(clearCache(path, &removed), 0);
    EXPECT_FALSE(removed);
    EXPECT_EQ(clearCache(otherSpelling, &removed), 0);
    EXPECT_TRUE(removed);

    RhValue result{};
    result.kind = RH_BOOLEAN;
    EXPECT_EQ(rh_call(tarvex_test::plugin(), "ClearCache", 0, nullptr, &result), 6);
    EXPECT_FALSE(result.written);
}

TEST_F(Readers, ServeACachedFileAfterItChangedOnDisk) {
    const std::string path = GifBuilder(1, 1).globalColors(kEight).image(solid(0, 0, 1, 1, 1)).write("changing.gif");
    ASSERT_EQ(readOneFrame(path, 1).rows(), std::vector<std::string>{"R"});
    GifBuilder(1, 1).globalColors(kEight).image(solid(0, 0, 1, 1, 2)).write("changing.gif");
    EXPECT_EQ(readOneFrame(path, 1).rows(), std::vector<std::string>{"R"});
    clearCache(path);
    EXPECT_EQ(readOneFrame(path, 1).rows(), std::vector<std::string>{"G"});
    clearCache(path);
}

}  // namespace
}  // namespace gif_test
