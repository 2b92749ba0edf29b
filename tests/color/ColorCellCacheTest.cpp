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

// Real samples: cells of width (max - min) / 2^bits from min, a cell's upper
// edge belonging to it. Keys: row-major, the last channel contiguous.
TEST(ColorCellCache, CellsAndKeys) {
    const auto bounds = boundsFor<double, 0>(2, {1.0, 5.0});  // cells of width 1
    const double samples[][2] = {{1.0, 0}, {2.0, 0}, {2.5, 1}, {5.0, 3}};
    for (const auto &[sample, cell] : samples) EXPECT_EQ(cellOf<double>(sample, bounds), cell);
    EXPECT_EQ(cellOf<float>(0.25f, boundsFor<float, 0>(8, {0.25f, 0.25f})), 0u);

    ColorCellCache<unsigned char, 2> cache(8);
    EXPECT_EQ(cache.entryCount(), std::uint64_t{1} << 24);
    const unsigned char rgb[] = {1, 2, 3};
    EXPECT_EQ(cache.keyOf(Color<unsigned char, 2>(rgb), boundsFor<unsigned char, 2>(8, {})),
              65536u + 2 * 256u + 3u);
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

// The indices of pixels mapped by a ditherer with the given cache settings,
// as one row or as slices of equal size.
std::vector<unsigned char> indicesOf(const std::vector<unsigned char> &pixels, std::uint8_t bits,
                                     bool cache, std::uint32_t slices = 1) {
    const GivenPalette<unsigned char, 0> quantizer(pixels, greys({0, 60, 200}), bits);
    const auto cols = static_cast<std::uint32_t>(pixels.size() / slices);
    auto ditherer = makeDitherer<unsigned char, 0>("None", quantizer, 1, cols, cache, false);
    std::vector<unsigned char> indices(pixels.size());
    for (std::uint32_t s = 0; s < slices; ++s) {
        ditherer->setPixels(pixels.data() + s * cols);
        ditherer->ditherSlice(indices.data() + s * cols, false);
    }
    return indices;
}

// With 2 bits a cell spans 64 values: 50 and 10 share cell 0. A stored 0
// reads as unknown, so a cell whose answer is 0 is searched afresh; each
// slice starts with an empty cache.
TEST(ColorCellCache, ColoursInOneCellShareAnAnswerExceptIndexZero) {
    EXPECT_EQ(indicesOf({50, 10, 10}, 2, false), (std::vector<unsigned char>{1, 0, 0}));
    EXPECT_EQ(indicesOf({50, 10, 10}, 2, true), (std::vector<unsigned char>{1, 1, 1}));
    EXPECT_EQ(indicesOf({10, 50, 10}, 2, true), (std::vector<unsigned char>{0, 1, 1}));
    EXPECT_EQ(indicesOf({50, 10}, 2, true, 2), (std::vector<unsigned char>{1, 0}));
}

// Sorting renumbers the palette for every holder, once.
TEST(ColorCellCache, SortedSearchSortsTheSharedPalette) {
    const GivenPalette<unsigned char, 0> quantizer({}, greys({200, 0, 60}), 8);
    auto ditherer = makeDitherer<unsigned char, 0>("None", quantizer, 1, 2, false, true);
    EXPECT_TRUE(quantizer.palette()->sorted);
    EXPECT_EQ(quantizer.palette()->colors[0][0], 0);
    EXPECT_EQ(quantizer.palette()->colors[2][0], 200);
    const unsigned char row[] = {250, 5};
    unsigned char indices[2] = {};
    ditherer->setPixels(row);
    ditherer->ditherSlice(indices, false);
    EXPECT_EQ(indices[0], 2);
    EXPECT_EQ(indices[1], 0);
}

}  // namespace
