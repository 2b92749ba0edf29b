// The parts of the written file that are fixed to the byte: screen, loop
// block, comments, control blocks, maps, background and row order.
#include <numeric>

#include "ExportCalls.h"
#include "ImportCalls.h"
#include "host/ListSeparator.h"

namespace export_test {
namespace {

using gif_test::kBlack, gif_test::kRed, gif_test::kGreen, gif_test::kBlue, gif_test::kWhite, gif_test::kYellow;
using tarvex_test::HostBooksGuard;

// Writes `frames` index frames of height x width against one map.
DecodedGif writeIndexed(const std::string &name, const std::vector<Rgb> &map,
                        const std::vector<mint> &indexDims, const std::vector<std::uint8_t> &indices,
                        WriteOptions options = {}) {
    HostBooksGuard guard;
    options.file = outputPath(name);
    const rh::RawArray maps = byteArray({mint(map.size()), 3}, colorBytes(map));
    const rh::RawArray raw = byteArray(indexDims, indices);
    const WriteResult result = writeColormaps(maps.get(), raw.get(), options);
    EXPECT_EQ(result.code, 0) << name;
    EXPECT_EQ(result.fileName, options.file);
    return decodeGif(options.file);
}

DecodedGif writeGrey(const std::string &name, mint slices, mint width, mint height,
                     const std::vector<std::uint8_t> &levels, WriteOptions options = {}) {
    HostBooksGuard guard;
    options.file = outputPath(name);
    const rh::Image image = byteImage(slices, width, height, 1, levels);
    EXPECT_EQ(writeFrames(image.get(), options).code, 0) << name;
    return decodeGif(options.file);
}

TEST(Layout, LoopBlockHoldsRepetitionsAndIsLeftOutForOnePlay) {
    const std::pair<mint, std::vector<std::vector<std::uint8_t>>> cases[] = {
        {0, {{1, 0, 0}}}, {1, {}}, {2, {{1, 1, 0}}}, {300, {{1, 0x2B, 1}}}, {65535, {{1, 0xFE, 0xFF}}}};
    for (const auto &[loops, blocks] : cases) {
        WriteOptions options;
        options.loops = loops;
        const DecodedGif gif = writeIndexed("loop.gif", {kBlack, kWhite}, {1, 1}, {0}, options);
        EXPECT_EQ(gif.loopBlocks, blocks) << loops << " plays";
        EXPECT_EQ(gif.version, "GIF89a");
    }
}

TEST(Layout, CommentsAreSplitAtTheSeparatorSkippingEmptyPieces) {
    const std::string s(OstrelUtils::kListSeparator);
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"one", {"one"}},
        {"first" + s + "second", {"first", "second"}},
        {s + s + "a" + s + s + "b" + s, {"a", "b"}},
        {s + s + s, {}},
        {std::string(600, 'x'), {std::string(600, 'x')}},
    };
    for (const auto &[joined, comments] : cases) {
        WriteOptions options;
        options.comments = joined;
        EXPECT_EQ(writeIndexed("comments.gif", {kBlack, kWhite}, {1, 1}, {0}, options).comments, comments);
    }
}

// Halves away from zero; the file keeps the low 16 bits.
TEST(Layout, DelaysAreRoundedHundredthsWrappedTo16Bits) {
    const std::pair<double, int> cases[] = {{0.015, 2},      {0.014, 1},  {0.1, 10}, {0.005, 1},
                                            {-0.015, 65534}, {655.36, 0}, {655.37, 1}, {0, 0}};
    for (auto [seconds, stored] : cases) {
        WriteOptions options;
        options.durations = reals({seconds});
        const DecodedGif gif = writeIndexed("delay.gif", {kBlack, kWhite}, {1, 1}, {0}, options);
        ASSERT_TRUE(gif.images.at(0).control.has_value());
        EXPECT_EQ(gif.images[0].control->DelayTime, stored) << seconds << " s";
    }
}

TEST(Layout, ControlBlocksCarryDelayDisposalAndTransparencyPerFrame) {
    WriteOptions options;
    options.durations = reals({0.5, 1, 2});
    options.disposals = ints({1, 2, 3});
    options.transparency = ints({0, 0, 255});  // blue in every frame
    const DecodedGif gif = writeIndexed("control.gif", {kBlack, kRed, kBlue, kWhite}, {3, 1, 2},
                                        {0, 1, 2, 3, 1, 1}, options);
    ASSERT_EQ(gif.images.size(), 3u);
    const int delays[] = {50, 100, 200};
    for (int k = 0; k < 3; ++k) {
        const GraphicsControlBlock &c = gif.images[std::size_t(k)].control.value();
        EXPECT_EQ(c.DelayTime, delays[k]);
        EXPECT_EQ(c.DisposalMode, k + 1);
        EXPECT_EQ(c.TransparentColor, 2);
        EXPECT_FALSE(c.UserInputFlag);
    }
    EXPECT_EQ(gif.images[1].indices, (std::vector<std::uint8_t>{2, 3}));
}

// The background is the given colour, else white, else black, else entry 0;
// entries past the filled ones are black and count.
TEST(Layout, BackgroundIndexFollowsItsFallbacks) {
    struct Case {
        std::vector<Rgb> map;
        std::vector<double> background;
        int index;
    };
    const Case cases[] = {
        {{kBlack, kRed, kWhite, kRed}, {255, 0, 0}, 1},
        {{kBlack, kRed, kWhite, kRed}, {1, 2, 3}, 2},
        {{kBlack, kRed, kWhite, kRed}, {}, 2},
        {{kRed, kBlack, kGreen, kBlue}, {}, 1},
        {{kRed, kGreen, kBlue, kYellow}, {7}, 0},
        {{kRed, kGreen, kBlue, Rgb{9, 9, 9}}, {9}, 3},
    };
    for (const Case &c : cases) {
        WriteOptions options;
        options.background = ints(c.background);
        EXPECT_EQ(writeIndexed("background.gif", c.map, {1, 1}, {0}, options).background, c.index);
    }
    // Grey levels 10, 20, 30 leave entry 3 of the map black.
    EXPECT_EQ(writeGrey("greybackground.gif", 1, 3, 1, {10, 20, 30}).background, 3);
}

TEST(Layout, AGreyFileSharesOneMapOfTheLevelsItUses) {
    const DecodedGif one = writeGrey("onelevel.gif", 2, 2, 2, std::vector<std::uint8_t>(8, 77));
    EXPECT_EQ(one.globalMap, (std::vector<Rgb>{{77, 77, 77}, kBlack}));
    EXPECT_EQ(one.images.at(1).indices, std::vector<std::uint8_t>(4, 0));

    const DecodedGif four = writeGrey("fourlevels.gif", 2, 3, 1, {200, 3, 90, 3, 3, 255});
    EXPECT_EQ(four.globalMap, (std::vector<Rgb>{{3, 3, 3}, {90, 90, 90}, {200, 200, 200}, kWhite}));
    EXPECT_EQ(four.images.at(0).indices, (std::vector<std::uint8_t>{2, 0, 1}));
    EXPECT_EQ(four.images.at(1).indices, (std::vector<std::uint8_t>{0, 0, 3}));
    EXPECT_EQ(four.background, 3);
    for (const DecodedImage &image : four.images) EXPECT_TRUE(image.localMap.empty());
}

// Rows written in any other order than the four passes come back misplaced.
TEST(Layout, InterlacedRowsComeInFourPasses) {
    for (std::uint32_t height = 1; height <= 9; ++height) {
        std::vector<std::uint8_t> rows(height);
        std::iota(rows.begin(), rows.end(), std::uint8_t{0});
        WriteOptions options;
        options.interlace = true;
        const DecodedGif gif = writeIndexed("interlace.gif", std::vector<Rgb>(16), {mint(height), 1}, rows, options);
        EXPECT_TRUE(gif.images.at(0).interlaced);
        EXPECT_EQ(gif.images[0].indices, rows) << "height " << height;
    }
}

// The header as giflib writes it for these arguments.
TEST(Layout, ScreenDescriptorBytes) {
    WriteOptions options;
    options.loops = 1;
    writeIndexed("screen.gif", {kBlack, kWhite, kRed, kGreen}, {2, 300}, std::vector<std::uint8_t>(600, 1), options);
    const std::vector<std::uint8_t> bytes = fileBytes(gif_test::scratchPath("screen.gif"));
    const std::vector<std::uint8_t> head{'G', 'I', 'F', '8', '9', 'a', 0x2C, 0x01, 0x02, 0x00,
                                         0xF1, 1, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 255, 0,
                                         0x21, 0xF9, 4};
    ASSERT_GE(bytes.size(), head.size());
    EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + long(head.size())), head);
    EXPECT_EQ(bytes.back(), ';');
}

}  // namespace
}  // namespace export_test
