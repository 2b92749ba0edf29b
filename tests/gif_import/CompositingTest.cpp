// Composited pictures of tiny animations, worked out by hand. Letters name
// the colours of kEight (K R G B W Y C M); lowercase is the same colour with
// alpha 0.
#include <gtest/gtest.h>

#include "ImportCalls.h"

namespace gif_test {
namespace {

using Rows = std::vector<std::string>;

class Compositing : public ::testing::Test {
    tarvex_test::HostBooksGuard books;
};

TEST_F(Compositing, DisposalModesPrepareTheNextFrame) {
    // Background white (index 4); every disposal once, 5 standing for an
    // undefined value that behaves as "keep".
    const std::string path = GifBuilder(3, 1, kEight, 4)
                                 .control(2).solid(0, 0, 3, 1, 1)
                                 .control(3).solid(1, 0, 1, 1, 2)
                                 .control(1).solid(2, 0, 1, 1, 3)
                                 .control(5).solid(0, 0, 1, 1, 5)
                                 .control(0).solid(1, 0, 1, 1, 6)
                                 .write("disposal.gif");
    const Picture all = readAllFrames(path);
    ASSERT_EQ(all.code, 0);
    EXPECT_EQ(all.slices, 5);
    EXPECT_EQ(all.channels, 4);
    EXPECT_EQ(all.rows(0), Rows{"RRR"});
    EXPECT_EQ(all.rows(1), Rows{"wGw"});  // restore-background left transparent white
    EXPECT_EQ(all.rows(2), Rows{"wwB"});  // restore-previous undid the green
    EXPECT_EQ(all.rows(3), Rows{"YwB"});
    EXPECT_EQ(all.rows(4), Rows{"YCB"});

    EXPECT_EQ(readOneFrame(path, 1).channels, 3);  // covers the canvas, no transparency
    EXPECT_EQ(readOneFrame(path, 2).channels, 4);

    int code = 0;
    const std::string frames = linkAnswer("ReadFrameMetadata", path, &code);
    std::size_t at = 0;
    for (const char *disposal : {"\"Background\"", "\"Previous\"", "\"None\"",
                                 "Missing[\"NotAvailable\"]", "Missing[\"NotAvailable\"]"}) {
        at = frames.find(std::string("\"DisposalOperation\" -> ") + disposal, at);
        ASSERT_NE(at, std::string::npos) << disposal << " in " << frames;
        ++at;
    }
}

TEST_F(Compositing, TransparentIndicesStampOnlyStillTransparentPixels) {
    const std::string path = GifBuilder(3, 1, kEight, 0)
                                 .control(1).solid(0, 0, 1, 1, 1)
                                 .control(1, 3).image(0, 0, 3, 1, {3, 3, 2})
                                 .control(1, 2).image(0, 0, 3, 1, {2, 2, 1}, {kBlack, kRed, kGreen, kBlue})
                                 .control(1).solid(1, 0, 1, 1, 2)
                                 .write("transparency.gif");
    const Picture all = readAllFrames(path);
    ASSERT_EQ(all.code, 0);
    EXPECT_EQ(all.rows(0), Rows{"Rkk"});
    EXPECT_EQ(all.rows(1), Rows{"RbG"});  // global transparent blue: kept red, stamped blue
    EXPECT_EQ(all.rows(2), Rows{"RgR"});  // local transparent green
    EXPECT_EQ(all.rows(3), Rows{"RGR"});  // the global green itself stays opaque
}

TEST_F(Compositing, FramesOutsideTheCanvasAreDroppedAndTheRestRenumbered) {
    const std::string path = RawGif(2, 2, kEight)
                                 .solid(0, 0, 2, 2, 1)
                                 .solid(1, 1, 2, 1, 2)  // past the right edge
                                 .solid(0, 1, 1, 1, 3)
                                 .write("dropped.gif");
    const Picture second = readOneFrame(path, 2);
    ASSERT_EQ(second.code, 0);
    EXPECT_EQ(second.rows(), (Rows{"RR", "BR"}));
    EXPECT_EQ(readOneFrame(path, 3).code, -1);
    int code = 0;
    EXPECT_NE(linkAnswer("ReadFileMetadata", path, &code).find("\"ImageCount\" -> 2"),
              std::string::npos);
}

TEST_F(Compositing, AnImageLargerThanTheScreenEnlargesTheCanvas) {
    const Picture frame = readOneFrame(RawGif(2, 2, kEight).solid(0, 0, 3, 1, 1).write("enlarged.gif"), 1);
    ASSERT_EQ(frame.code, 0);
    EXPECT_EQ(frame.rank, 2);
    EXPECT_EQ(frame.channels, 4);
    EXPECT_EQ(frame.rows(), (Rows{"RRR", "kkk"}));
}

TEST_F(Compositing, IndicesPastThePaletteLeaveThePixel) {
    // The untouched pixel keeps the background red; the frame covers the
    // canvas without a transparent index, so no alpha channel hides it.
    const Picture frame =
        readOneFrame(RawGif(2, 1, {kRed, kGreen}, 0).image(0, 0, 2, 1, {1, 5}).write("past-palette.gif"), 1);
    EXPECT_EQ(frame.channels, 3);
    EXPECT_EQ(frame.rows(), Rows{"GR"});
}

TEST_F(Compositing, InterlacedRowsArriveInImageOrder) {
    // Five rows reach all four interlace passes (rows 0, 4, 2, then 1 and 3).
    const std::string path =
        GifBuilder(1, 5, kEight).image(0, 0, 1, 5, {1, 2, 3, 4, 5}, {}, true).write("interlaced.gif");
    EXPECT_EQ(readOneFrame(path, 1).rows(), (Rows{"R", "G", "B", "W", "Y"}));
    int code = 0;
    EXPECT_EQ(linkAnswer("ReadRasterBits", path, &code), "{{{1}, {2}, {3}, {4}, {5}}}");
}

}  // namespace
}  // namespace gif_test
