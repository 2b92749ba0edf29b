// The answers of the metadata, palette and raster readers, the codes of all
// readers, and the rules of the decoded-file cache.
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>

#include "ImportCalls.h"
#include "UninitialisedPlugin.h"

namespace gif_test {
namespace {

using Rows = std::vector<std::string>;

class Readers : public ::testing::Test {
    tarvex_test::HostBooksGuard books;
};

std::string answer(const char *exportName, const std::string &path) {
    int code = 99;
    std::string text = linkAnswer(exportName, path, &code);
    EXPECT_EQ(code, 0) << exportName;
    return text;
}

std::string oneRedPixel(const std::string &name, std::uint8_t index = 1) {
    return GifBuilder(1, 1, kEight).solid(0, 0, 1, 1, index).write(name);
}

TEST_F(Readers, AnswerWithTheExactExpressions) {
    const std::string path = GifBuilder(4, 2, {kBlack, kRed, kGreen, kBlue}, 2)
                                 .loop(0).comment({"hel", "lo"})
                                 .control(1).solid(0, 0, 4, 2, 1)
                                 .control(2, 2, 7, true)
                                 .image(1, 0, 2, 1, {2, 2}, {kBlack, kWhite, kYellow, kCyan})
                                 .comment({"a\xff" "b"})
                                 .write("two-frames.gif");
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
        clearCache(path);
        const std::size_t at = text.find("\"AnimationRepetitions\" -> ") + 26;
        return text.substr(at, text.find(',', at) - at);
    };
    EXPECT_EQ(repetitions(oneRedPixel("repetitions.gif")), "1");
    // Any application name counts, and the last block wins.
    EXPECT_EQ(repetitions(GifBuilder(1, 1, kEight).loop(5).loop(2, "ANYTHING!!!").solid(0, 0, 1, 1, 0)
                              .write("repetitions.gif")),
              "3");
    // A sub-block too short to hold a count is not a loop block.
    EXPECT_EQ(repetitions(RawGif(1, 1, kEight).solid(0, 0, 1, 1, 0).application("NETSCAPE2.0", {"\x01\x05"})
                              .write("repetitions.gif")),
              "1");
}

TEST_F(Readers, DescribeFilesWithoutGlobalColorsOrWithTheBackgroundPastThem) {
    const std::string noGlobal =
        GifBuilder(2, 1).comment({"only"}).image(0, 0, 2, 1, {0, 1}, {kRed, kGreen}).write("no-global.gif");
    EXPECT_EQ(answer("ReadFileMetadata", noGlobal),
              "{\"ImageSize\" -> {2, 1}, \"ImageCount\" -> 1, \"Background\" -> None, "
              "\"AnimationRepetitions\" -> 1, \"Comments\" -> \"only\"}");
    const Tensor palette = readGlobalPalette(noGlobal);
    EXPECT_EQ(palette.dimensions, (std::vector<long>{0}));
    EXPECT_TRUE(palette.values.empty());

    const std::string pastBackground =
        RawGif(2, 1, {kRed, kGreen}, 2).image(0, 0, 1, 1, {1}).write("bg-past.gif");
    EXPECT_NE(answer("ReadFileMetadata", pastBackground).find("\"Background\" -> RGBColor[0., 0., 0.]"),
              std::string::npos);
    EXPECT_EQ(readOneFrame(pastBackground, 1).rows(), Rows{"Gk"});
}

TEST_F(Readers, ReturnTheirCodes) {
    const std::string missing = scratchPath("missing.gif");
    int code = 0;
    for (const char *name : {"ReadFileMetadata", "ReadFrameMetadata", "ReadPalettes", "ReadRasterBits"}) {
        EXPECT_EQ(linkAnswer(name, missing, &code), "");
        EXPECT_EQ(code, -2) << name;
        for (const char *malformed : {"{1}", "{\"a\", \"b\"}"}) {
            tarvex_test::callLink(name, malformed, &code);
            EXPECT_EQ(code, 6) << name << malformed;
        }
    }
    EXPECT_EQ(readOneFrame(missing, 1).code, -2);
    EXPECT_EQ(readAllFrames(missing).code, -2);
    EXPECT_EQ(readGlobalPalette(missing).code, -2);
    bool removed = true;
    EXPECT_EQ(clearCache(missing, &removed), 0);
    EXPECT_FALSE(removed);  // a file that cannot be opened is not cached

    const std::string path = oneRedPixel("one.gif");
    const Picture zero = readOneFrame(path, 0);
    EXPECT_EQ(zero.code, -1);
    EXPECT_FALSE(zero.written);
    EXPECT_EQ(readOneFrame(path, 1).rows(), Rows{"R"});
    EXPECT_EQ(readOneFrame(path, 2).code, -1);
    EXPECT_EQ(readAllFrames(path).rank, 2);  // a single frame is a 2-D image

    // A frame reader given only the name refuses, and still gives the name back.
    const RhValue nameOnly{RH_STRING, {.string = path.c_str()}, 0};
    RhValue image{RH_IMAGE, {}, 0};
    EXPECT_EQ(rh_call(tarvex_test::plugin(), "ReadOneFrame", 1, &nameOnly, &image), 6);
    EXPECT_FALSE(image.written);
}

TEST_F(Readers, CacheFilesByTheirExactNames) {
    const std::string path = oneRedPixel("cached.gif");
    const std::string otherSpelling = (std::filesystem::path(path).parent_path() / "./cached.gif").string();
    ASSERT_EQ(readOneFrame(path, 0).code, -1);  // loaded before the number is checked
    ASSERT_EQ(readOneFrame(otherSpelling, 1).code, 0);

    bool removed = false;
    for (const auto &[name, wasCached] : {std::pair{path, true}, {path, false}, {otherSpelling, true}}) {
        EXPECT_EQ(clearCache(name, &removed), 0);
        EXPECT_EQ(removed, wasCached) << name;
    }
    RhValue result{RH_BOOLEAN, {}, 0};
    EXPECT_EQ(rh_call(tarvex_test::plugin(), "ClearCache", 0, nullptr, &result), 6);
    EXPECT_FALSE(result.written);
}

TEST_F(Readers, ServeACachedFileAfterItChangedOnDisk) {
    const std::string path = oneRedPixel("changing.gif");
    ASSERT_EQ(readOneFrame(path, 1).rows(), Rows{"R"});
    oneRedPixel("changing.gif", 2);
    EXPECT_EQ(readOneFrame(path, 1).rows(), Rows{"R"});
    clearCache(path);
    EXPECT_EQ(readOneFrame(path, 1).rows(), Rows{"G"});
    clearCache(path);
}

// A second copy of the library is a second instance that was never
// initialised: without the kernel's table it refuses before it reads an
// argument or makes anything.
using UninitialisedReaders = tarvex_test::UninitialisedPluginTest;

TEST_F(UninitialisedReaders, RefuseWithoutTouchingAnything) {
    // A null file name, which the initialised instance reads as "": the
    // refusal comes from the missing initialisation, not the arguments.
    const RhValue args[2] = {{RH_NONE, {}, 0}, {RH_INTEGER, {.integer = 1}, 0}};
    const RhCounters before = rh_counters();
    for (const auto &[name, kind] : {std::pair{"ReadOneFrame", RH_IMAGE}, {"ReadAllFrames", RH_IMAGE},
                                     {"ReadGlobalPalette", RH_TENSOR}, {"ClearCache", RH_BOOLEAN}}) {
        RhValue result{kind, {}, 0};
        EXPECT_NE(rh_call(tarvex_test::plugin(), name, 2, args, &result), 6) << name;
        EXPECT_EQ(rh_call(uninitialised_, name, 2, args, &result), 6) << name;
        EXPECT_FALSE(result.written) << name;
    }
    const RhCounters after = rh_counters();
    EXPECT_EQ(std::memcmp(&after, &before, sizeof after), 0) << "the host's books changed";
}

}  // namespace
}  // namespace gif_test
