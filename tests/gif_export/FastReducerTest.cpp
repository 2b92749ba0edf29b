// The plug-in's reducer against the tree as first written, to the bit, on
// pictures that reach every rule: few and many colours, pruning, smaller
// palettes, with and without diffusion.
#include <gtest/gtest.h>

#include "PlainOctree.h"
#include "TestPictures.h"
#include "gif_export/ColorReducer.h"

namespace export_test {
namespace {

struct Case {
    const char *name;
    std::uint32_t width, height;
    std::vector<std::uint8_t> rgb;
    std::uint32_t maxColors = 256;
    std::uint32_t maxNodes = 266817;
};

std::vector<Case> cases() {
    std::vector<Case> all;
    all.push_back({"photo", 96, 64, photoLike(96, 64, 1, 1)});
    all.push_back({"large photo", 320, 200, photoLike(320, 200, 1, 2)});
    all.push_back({"noise", 128, 128, randomBytes(128 * 128 * 3, 3)});
    all.push_back({"few colours", 50, 40, randomBytes(50 * 40 * 3, 4, 5)});
    all.push_back({"one colour", 7, 3, std::vector<std::uint8_t>(7 * 3 * 3, 99)});
    all.push_back({"64 colours", 80, 60, photoLike(80, 60, 1, 5), 64});
    all.push_back({"16 colours", 80, 60, photoLike(80, 60, 1, 6), 16});
    all.push_back({"5 colours", 80, 60, randomBytes(80 * 60 * 3, 7), 5});
    all.push_back({"pruned once", 80, 60, photoLike(80, 60, 1, 8), 256, 6000});
    all.push_back({"pruned often", 120, 90, randomBytes(120 * 90 * 3, 9), 256, 300});
    all.push_back({"pruned, few colours", 120, 90, photoLike(120, 90, 1, 10), 12, 900});
    return all;
}

TEST(FastReducer, AgreesWithThePlainTreeToTheBit) {
    for (const Case &c : cases())
        for (bool dither : {false, true}) {
            GifExport::ReduceSettings settings;
            settings.maxColors = c.maxColors;
            settings.tree.maxNodes = c.maxNodes;
            settings.dither = dither;
            const std::size_t pixels = std::size_t(c.width) * c.height;
            std::vector<std::uint8_t> fast(pixels), plain(pixels);
            const GifExport::ColorMapOwner fastMap =
                GifExport::reduceColors(c.rgb.data(), c.height, c.width, fast.data(), settings);
            const GifExport::ColorMapOwner plainMap = GifExport::reduceColorsWith<plain_export::PlainOctree>(
                c.rgb.data(), c.height, c.width, plain.data(), settings);
            EXPECT_TRUE(GifExport::sameColorMap(fastMap.get(), plainMap.get())) << c.name << ", dither " << dither;
            EXPECT_EQ(fast, plain) << c.name << ", dither " << dither;
        }
}

}  // namespace
}  // namespace export_test
