// The export's colour reducer where its rules can go wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <tuple>
#include <vector>

#include "gif_export/ColorReducer.h"
#include "gif_export/ErrorLimitTable.h"
#include "gif_export/ExportOctree.h"

namespace GifExport {
namespace {

using Colors = std::vector<std::tuple<int, int, int>>;

std::vector<std::uint8_t> pixelsOf(const Colors &colors) {
    std::vector<std::uint8_t> rgb;
    for (auto [r, g, b] : colors)
        rgb.insert(rgb.end(), {std::uint8_t(r), std::uint8_t(g), std::uint8_t(b)});
    return rgb;
}

Colors mapColors(const ColorMapObject &map, int count) {
    Colors colors;
    for (int i = 0; i < count; ++i)
        colors.emplace_back(map.Colors[i].Red, map.Colors[i].Green, map.Colors[i].Blue);
    return colors;
}

struct Reduced {
    ColorMapOwner map;
    std::vector<std::uint8_t> indices;
};

Reduced reduce(const std::vector<std::uint8_t> &rgb, std::uint32_t height, std::uint32_t width,
               bool dither, std::uint32_t maxColors = 256) {
    Reduced result;
    result.indices.assign(std::size_t(height) * width, 0xEE);
    ReduceSettings settings;
    settings.maxColors = maxColors;
    settings.dither = dither;
    result.map = reduceColors(rgb.data(), height, width, result.indices.data(), settings);
    return result;
}

// Distinct even channel values, so no two share a depth-8 leaf.
Colors distinctColors(int count) {
    Colors colors;
    for (int i = 0; i < count; ++i) colors.emplace_back((i & 15) * 16, (i >> 4) * 16, 254 - 2 * i % 256);
    return colors;
}

// The map is the smallest power of two that holds them.
TEST(ColorReducer, AFewColoursAreKeptExactlyAndMappedToThemselves) {
    const std::pair<int, int> cases[] = {{2, 2}, {3, 4}, {5, 8}, {16, 16}, {17, 32}, {129, 256}, {200, 256}, {256, 256}};
    for (auto [count, mapSize] : cases) {
        const Colors colors = distinctColors(count);
        ASSERT_EQ(std::set(colors.begin(), colors.end()).size(), std::size_t(count));
        for (bool dither : {false, true}) {
            const Reduced r = reduce(pixelsOf(colors), 1, std::uint32_t(count), dither);
            EXPECT_EQ(r.map->ColorCount, mapSize) << count << " colours";
            const Colors palette = mapColors(*r.map, count);
            EXPECT_EQ(std::set(palette.begin(), palette.end()), std::set(colors.begin(), colors.end()))
                << count << " colours, dither " << dither;
            for (int i = 0; i < count; ++i)
                EXPECT_EQ(palette[r.indices[std::size_t(i)]], colors[std::size_t(i)]) << "pixel " << i;
        }
    }
}

TEST(ColorReducer, OneColourGivesATwoEntryMapLedByIt) {
    for (bool dither : {false, true}) {
        const Reduced r = reduce(pixelsOf(Colors(12, {10, 200, 30})), 3, 4, dither);
        ASSERT_EQ(r.map->ColorCount, 2);
        EXPECT_EQ(mapColors(*r.map, 2), (Colors{{10, 200, 30}, {0, 0, 0}}));
        EXPECT_EQ(r.indices, std::vector<std::uint8_t>(12, 0));
    }
}

// Channel values 0 and 1 share one depth-8 leaf: one colour, their rounded mean.
TEST(ColorReducer, ColoursOfOneLeafBecomeTheirRoundedMean) {
    const Reduced r = reduce(pixelsOf({{0, 0, 0}, {1, 1, 1}, {1, 1, 1}, {200, 0, 0}}), 1, 4, false);
    EXPECT_EQ(mapColors(*r.map, 2), (Colors{{1, 1, 1}, {200, 0, 0}}));
}

TEST(ColorReducer, ManyColoursAreReducedToTheLimit) {
    std::vector<std::uint8_t> rgb(64 * 64 * 3);
    for (std::size_t i = 0; i < rgb.size(); ++i) rgb[i] = std::uint8_t((i * 7919) % 251);
    for (std::uint32_t limit : {256u, 64u, 16u}) {
        const Reduced r = reduce(rgb, 64, 64, true, limit);
        const int used = *std::max_element(r.indices.begin(), r.indices.end()) + 1;
        EXPECT_LE(used, int(limit));
        EXPECT_LE(r.map->ColorCount, int(limit));
    }
}

// Colours in one 6-bit cell: A and B, C and D. In a file with no other
// colours every colour is in the palette, so only the cell cache makes one
// pixel take another's index: the one diffusion met first.
const std::tuple<int, int, int> A{40, 40, 40}, B{43, 43, 43}, C{200, 100, 100}, D{203, 103, 103};

TEST(ColorReducer, DitheringSharesOneIndexPerCellInItsOrderOfRows) {
    struct Case {
        const char *what;
        std::uint32_t width, height;
        Colors pixels;    // image order
        Colors expected;  // palette colours, image order
    };
    const Case cases[] = {
        {"the bottom row first", 1, 2, {A, B}, {B, B}},
        {"the first row left to right", 2, 1, {A, B}, {A, A}},
        {"the next row right to left", 2, 2, {C, D, A, A}, {D, D, A, A}},
    };
    for (const Case &c : cases) {
        const Reduced plain = reduce(pixelsOf(c.pixels), c.height, c.width, false);
        const Reduced dithered = reduce(pixelsOf(c.pixels), c.height, c.width, true);
        const Colors plainPalette = mapColors(*plain.map, plain.map->ColorCount);
        const Colors palette = mapColors(*dithered.map, dithered.map->ColorCount);
        for (std::size_t i = 0; i < c.pixels.size(); ++i) {
            EXPECT_EQ(plainPalette[plain.indices[i]], c.pixels[i]) << c.what << ", pixel " << i;
            EXPECT_EQ(palette[dithered.indices[i]], c.expected[i]) << c.what << ", pixel " << i;
        }
    }
}

TEST(ExportOctree, PrunesTheDeepestLevelWhenTheTreePassesMaxNodes) {
    ExportOctree::Limits limits;
    limits.maxNodes = 20;
    limits.nodesPerBlock = 4;
    ExportOctree tree(limits);
    const std::uint8_t first[3] = {0, 0, 0}, second[3] = {255, 255, 255}, third[3] = {0, 255, 0};
    tree.classify(first);   // root + 8 levels: 9 nodes
    tree.classify(second);  // 17 nodes
    EXPECT_EQ(tree.depth(), 8);
    tree.classify(third);   // 25 nodes, over the limit after this pixel
    EXPECT_EQ(tree.nodeCount(), 25u);
    tree.classify(first);   // prunes level 8 first: three leaves merge
    EXPECT_EQ(tree.depth(), 7);
    EXPECT_EQ(tree.nodeCount(), 22u);
    tree.classify(first);   // 22 > 20 still: level 7 goes too
    EXPECT_EQ(tree.depth(), 6);
    EXPECT_EQ(tree.nodeCount(), 19u);
    const std::vector<GifColorType> palette = tree.buildPalette();
    // Merged pixels keep their sums: each node is still its colour, in the
    // order of the root's children.
    ASSERT_EQ(palette.size(), 3u);
    EXPECT_EQ(mapColors(*makeColorMap(4, palette), 3), (Colors{{0, 0, 0}, {0, 255, 0}, {255, 255, 255}}));
}

TEST(ErrorLimitTable, FollowsTheSlopesForEachColourCount) {
    struct Case {
        std::uint32_t colors;
        std::vector<std::pair<int, int>> points;  // error, limit
    };
    const Case cases[] = {
        // Fewer than 16 colours: every error passes whole.
        {8, {{0, 0}, {1, 1}, {200, 200}, {255, 255}, {-255, -255}}},
        // 32 colours, step 2: slope one to 128, then constant.
        {32, {{127, 127}, {128, 128}, {129, 128}, {255, 128}, {-200, -128}}},
        // 48 colours, step 3: constant tail at 85.
        {48, {{84, 84}, {85, 85}, {86, 85}, {255, 85}}},
        // 64 colours, step 4: slope one to 64, half slope to 192.
        {64, {{63, 63}, {64, 64}, {65, 65}, {66, 65}, {67, 66}, {191, 128}, {192, 128}, {255, 128}}},
        // 256 colours, step 16.
        {256, {{15, 15}, {16, 16}, {17, 17}, {18, 17}, {19, 18}, {20, 18}, {45, 31}, {46, 31},
               {47, 32}, {48, 32}, {255, 32}, {-17, -17}, {-47, -32}}},
        // 240 colours, step 15: the half slope ends after an even error, so the tail is one higher.
        {240, {{17, 17}, {49, 33}, {50, 33}, {51, 34}, {255, 34}, {-51, -34}}},
    };
    for (const Case &c : cases) {
        const ErrorLimitTable limit(c.colors);
        for (auto [error, expected] : c.points)
            EXPECT_EQ(limit(error), expected) << c.colors << " colours, error " << error;
    }
}

}  // namespace
}  // namespace GifExport
