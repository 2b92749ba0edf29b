// Generated animations composited by the plug-in and, independently, by a
// plain giflib decode with textbook compositing: every visible pixel and every
// alpha value must agree. (The plug-in also keeps the colour of transparent
// pixels, which the textbook way does not define.)
#include <array>
#include <random>

#include <gif_lib.h>
#include <gtest/gtest.h>

#include "ImportCalls.h"

namespace gif_test {
namespace {

using Rgba = std::array<std::uint8_t, 4>;
using Canvas = std::vector<Rgba>;

int below(std::mt19937 &random, int bound) {
    return static_cast<int>(random() % static_cast<unsigned>(bound));
}

ColorTable randomColors(std::mt19937 &random, std::size_t count) {
    ColorTable colors(count);
    for (Rgb &c : colors)
        c = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
             static_cast<std::uint8_t>(random())};
    return colors;
}

std::string randomAnimation(std::mt19937 &random, const std::string &name) {
    const int width = 1 + below(random, 9), height = 1 + below(random, 9);
    GifBuilder gif(width, height, randomColors(random, 16), below(random, 16));
    for (int frames = 1 + below(random, 6); frames > 0; --frames) {
        const int w = 1 + below(random, width), h = 1 + below(random, height);
        const int left = below(random, width - w + 1), top = below(random, height - h + 1);
        const ColorTable local = below(random, 3) == 0 ? randomColors(random, 4) : ColorTable{};
        std::vector<std::uint8_t> indices(static_cast<std::size_t>(w * h));
        for (std::uint8_t &index : indices)
            index = static_cast<std::uint8_t>(below(random, local.empty() ? 16 : 4));
        const int disposal = below(random, 4), transparent = below(random, 2) ? below(random, 4) : -1;
        gif.control(disposal, transparent, below(random, 50));
        gif.image(left, top, w, h, indices, local, below(random, 4) == 0);
    }
    return gif.write(name);
}

std::vector<Canvas> textbookFrames(const std::string &path) {
    int error = 0;
    GifFileType *gif = DGifOpenFileName(path.c_str(), &error);
    EXPECT_NE(gif, nullptr);
    EXPECT_EQ(DGifSlurp(gif), GIF_OK);
    const int width = gif->SWidth;
    Canvas canvas(static_cast<std::size_t>(width * gif->SHeight), Rgba{0, 0, 0, 0});
    std::vector<Canvas> frames;
    for (int i = 0; i < gif->ImageCount; ++i) {
        const SavedImage &image = gif->SavedImages[i];
        const GifImageDesc &d = image.ImageDesc;
        const ColorMapObject *map = d.ColorMap != nullptr ? d.ColorMap : gif->SColorMap;
        GraphicsControlBlock gcb;
        DGifSavedExtensionToGCB(gif, i, &gcb);
        const Canvas before = canvas;
        for (int y = 0; y < d.Height; ++y)
            for (int x = 0; x < d.Width; ++x) {
                const int index = image.RasterBits[y * d.Width + x];
                if (index == gcb.TransparentColor) continue;
                const GifColorType &c = map->Colors[index];
                canvas[static_cast<std::size_t>((d.Top + y) * width + d.Left + x)] = {c.Red, c.Green, c.Blue, 255};
            }
        frames.push_back(canvas);
        if (gcb.DisposalMode == DISPOSE_PREVIOUS) canvas = before;
        if (gcb.DisposalMode == DISPOSE_BACKGROUND)
            for (int y = 0; y < d.Height; ++y)
                for (int x = 0; x < d.Width; ++x)
                    canvas[static_cast<std::size_t>((d.Top + y) * width + d.Left + x)] = {0, 0, 0, 0};
    }
    DGifCloseFile(gif, &error);
    return frames;
}

TEST(ReferenceDecode, CompositedFramesMatchATextbookDecode) {
    tarvex_test::HostBooksGuard books;
    std::mt19937 random(20240611);
    for (int file = 0; file < 40; ++file) {
        const std::string path = randomAnimation(random, "random" + std::to_string(file) + ".gif");
        const std::vector<Canvas> expected = textbookFrames(path);
        const Picture all = readAllFrames(path);
        ASSERT_EQ(all.code, 0);
        ASSERT_EQ(static_cast<std::size_t>(all.slices), expected.size());
        for (long slice = 0; slice < all.slices; ++slice)
            for (long y = 0; y < all.height; ++y)
                for (long x = 0; x < all.width; ++x) {
                    const Rgba want = expected[static_cast<std::size_t>(slice)][static_cast<std::size_t>(y * all.width + x)];
                    const std::vector<std::uint8_t> got = all.pixel(slice, x, y);
                    ASSERT_EQ(got[3], want[3]) << path << " frame " << slice << " at " << x << "," << y;
                    if (want[3] != 0) {
                        ASSERT_EQ(got, std::vector<std::uint8_t>(want.begin(), want.end()))
                            << path << " frame " << slice << " at " << x << "," << y;
                    }
                }
        clearCache(path);
    }
}

}  // namespace
}  // namespace gif_test
