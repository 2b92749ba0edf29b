// The colour-cell cache: which cell a sample falls in, and how a ditherer
// built from a quantizer uses the cache.
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "color/ColorCellCache.h"
#include "color/Quantizer.h"
#include "dither/MakeDitherer.h"

namespace {

using namespace ColorUtilities;

template <typename T, int N>
ColorBounds<T, N> boundsFor(std::uint32_t bits, const std::vector<T> &pixels) {
    ColorBounds<T, N> bounds;
    bounds.fillForSlice(bits, pixels.data(), pixels.size() / (N + 1));
    return bounds;
}

template <typename T>
std::uint32_t cellOf(T sample, const ColorBounds<T, 0> &bounds) {
    ColorCellCache<T, 0> cache(bounds.bits);
    const T samples[] = {sample};
    return static_cast<std::uint32_t>(cache.keyOf(Color<T, 0>(samples), bounds));
}

// Cells of width (max - min) / 2^bits from min; a cell's upper edge belongs to it.
TEST(ColorCellCache, RealSamplesCountCellsFromTheMinimum) {
    const auto bounds = boundsFor<double, 0>(2, {1.0, 5.0});  // cells of width 1
    EXPECT_EQ(cellOf<double>(1.0, bounds), 0u);
    EXPECT_EQ(cellOf<double>(2.0, bounds), 0u);
    EXPECT_EQ(cellOf<double>(2.5, bounds), 1u);
    EXPECT_EQ(cellOf<double>(5.0, bounds), 3u);
    const auto flat = boundsFor<float, 0>(8, {0.25f, 0.25f});
    EXPECT_EQ(cellOf<float>(0.25f, flat), 0u);
}

TEST(ColorCellCache, KeysAreRowMajorWithTheLastChannelContiguous) {
    ColorCellCache<unsigned char, 2> cache(8);
    EXPECT_EQ(cache.entryCount(), std::uint64_t{1} << 24);
    const auto bounds = boundsFor<unsigned char, 2>(8, {});
    const unsigned char samples[] = {1, 2, 3};
    EXPECT_EQ(cache.keyOf(Color<unsigned char, 2>(samples), bounds), 65536u + 2 * 256u + 3u);
    EXPECT_THROW(cache.lookup(cache.entryCount()), std::out_of_range);
}

// A quantizer that proposes a given palette, to build ditherers from.
template <typename T, int N>
class GivenPalette : public Quant::Quantizer<T, N> {
public:
    GivenPalette(const std::vector<T> &pixels, const std::vector<Color<T, N>> &colors,
                 std::uint8_t bits)
        : Quant::Quantizer<T, N>(static_cast<std::uint32_t>(pixels.size() / (N + 1)), pixels.data(),
                                 static_cast<std::uint32_t>(colors.size())) {
        this->setPrecision(bits, 0);
        this->palette_->colors = colors;
    }
    void quantize() override {}
    void reset() override {}
};

std::vector<Color<unsigned char, 0>> greys(std::initializer_list<unsigned char> values) {
    std::vector<Color<unsigned char, 0>> colors;
    for (unsigned char v : values) colors.emplace_back(&v);
    return colors;
}

std::vector<unsigned char> indicesOf(const std::vector<unsigned char> &row, std::uint8_t bits,
                                     bool cache) {
    const GivenPalette<unsigned char, 0> quantizer(row, greys({0, 60, 200}), bits);
    auto ditherer = makeDitherer<unsigned char, 0>(
        "None", quantizer, 1, static_cast<std::uint32_t>(row.size()), cache, false);
    ditherer->setPixels(row.data());
    std::vector<unsigned char> indices(row.size());
    ditherer->ditherSlice(indices.data(), false);
    return indices;
}

// With 2 bits a cell spans 64 values: 50 and 10 share cell 0.
TEST(ColorCellCache, ColoursInOneCellShareAnAnswerExceptIndexZero) {
    EXPECT_EQ(indicesOf({50, 10, 10}, 2, false), (std::vector<unsigned char>{1, 0, 0}));
    EXPECT_EQ(indicesOf({50, 10, 10}, 2, true), (std::vector<unsigned char>{1, 1, 1}));
    // A stored 0 reads as unknown, so each pixel is searched afresh.
    EXPECT_EQ(indicesOf({10, 50, 10}, 2, true), (std::vector<unsigned char>{0, 1, 1}));
}

TEST(ColorCellCache, EachSliceStartsWithAnEmptyCache) {
    const std::vector<unsigned char> slices = {50, 10};
    const GivenPalette<unsigned char, 0> quantizer(slices, greys({0, 60, 200}), 2);
    auto ditherer = makeDitherer<unsigned char, 0>("FloydSteinberg", quantizer, 1, 1, true, false);
    unsigned char index[2] = {};
    for (int s = 0; s < 2; ++s) {
        ditherer->setPixels(&slices[s]);
        ditherer->ditherSlice(&index[s], false);
    }
    EXPECT_EQ(index[1], 0);
}

// Sorting renumbers the palette for every holder, once.
TEST(ColorCellCache, SortedSearchSortsTheSharedPalette) {
    const std::vector<unsigned char> row = {250, 5};
    const GivenPalette<unsigned char, 0> quantizer(row, greys({200, 0, 60}), 8);
    auto ditherer = makeDitherer<unsigned char, 0>("None", quantizer, 1, 2, false, true);
    EXPECT_TRUE(quantizer.palette()->sorted);
    EXPECT_EQ(quantizer.palette()->colors[0][0], 0);
    EXPECT_EQ(quantizer.palette()->colors[2][0], 200);
    unsigned char indices[2] = {};
    ditherer->setPixels(row.data());
    ditherer->ditherSlice(indices, false);
    EXPECT_EQ(indices[0], 2);
    EXPECT_EQ(indices[1], 0);
}

}  // namespace
