#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "color/Color.h"
#include "color/ColorBounds.h"
#include "color/ColorCellCache.h"
#include "color/Instantiations.h"
#include "color/IntensityIndex.h"
#include "color/NearestColorFinder.h"
#include "color/PairDistanceTable.h"
#include "color/Palette.h"
#include "color/Quantizer.h"
#include "color/SortedSearch.h"
#include "dither/DiffusedError.h"
#include "dither/SliceOutput.h"

namespace ColorUtilities {

// Maps the pixels of an image slice to palette colours, in serpentine rows.
// The base class maps each pixel on its own; methods that diffuse the error
// override the hooks, and run the scan over their own final class so that
// the hooks inline into it.
template <typename T, int N>
class Ditherer {
public:
    using ColorType = Color<T, N>;
    // Per channel, in the arithmetic that diffusion uses for T.
    using Error = std::array<typename DiffusedError<T>::Value, N + 1>;
    static constexpr std::uint32_t kForward = 1;
    static constexpr std::uint32_t kBackward = 0xFFFFFFFF;  // -1 in unsigned arithmetic
    static constexpr std::uint32_t kWarmAhead = 2;

    // The two flags are ignored on purpose: a ditherer made for a given
    // palette searches exhaustively and caches nothing.
    Ditherer(SharedPalette<T, N> palette, std::uint32_t rows, std::uint32_t cols, bool cacheFlag,
             bool sortedFlag);
    Ditherer(const Quant::Quantizer<T, N> &quantizer, std::uint32_t rows, std::uint32_t cols,
             bool cacheFlag, bool sortedFlag);
    Ditherer(const Ditherer &) = delete;
    Ditherer &operator=(const Ditherer &) = delete;
    virtual ~Ditherer() = default;

    // The slice to map next: rows x cols interleaved pixels.
    void setPixels(const T *pixels) noexcept { pixels_ = pixels; }
    ColorBounds<T, N> &bounds() noexcept { return bounds_; }
    std::uint8_t bits() const noexcept { return bits_; }
    const Palette<T, N> &palette() const noexcept { return *palette_; }

    // Writes each pixel's palette colour (N+1 samples of T) or its palette
    // index (to an unsigned index array).
    template <typename Out>
    void ditherSlice(Out *out, bool writeColours) {
        resetCache();
        resetState();
        mapSlice(sliceOutput<T, N>(out, writeColours));
    }

    virtual void resetCache();

protected:
    virtual void resetState() {}
    virtual ColorType pixelAt(std::uint32_t row, std::uint32_t col);
    virtual Error errorOf(const ColorType &wanted, const ColorType &chosen);
    virtual void diffuseError(const Error &error, std::uint32_t row, std::uint32_t col,
                              std::uint32_t step);
    // Called before the first pixel of each row.
    void beginRow(std::uint32_t) {}
    // Whether each pixel waits for the one before. Without, the colours
    // asked for are the picture's own, which repeat often; with, the errors
    // added make most of them new.
    static constexpr bool kDiffusesError = false;
    // Every final method class runs the scan over itself.
    virtual void mapSlice(const SliceOutput<T, N> &output) { scanAs(*this, output); }

    template <class Method>
    void scanAs(Method &method, const SliceOutput<T, N> &output) {
        std::visit([&](const auto &write) { scan(method, write); }, output);
    }

    const T *inputPixel(std::uint32_t row, std::uint32_t col) const {
        return pixels_ + (std::size_t{cols_} * row + col) * (N + 1);
    }

    std::uint8_t bits_;
    std::uint32_t rows_;
    std::uint32_t cols_;
    const T *pixels_ = nullptr;
    bool useCache_ = false;
    bool useSortedSearch_ = false;
    SharedPalette<T, N> palette_;
    std::vector<Error> methodState_;
    ColorBounds<T, N> bounds_;
    // Only a ditherer that caches has one: it takes up to 64 MB.
    std::optional<ColorCellCache<T, N>> cache_;
    IntensityIndex intensityIndex_;
    PairDistanceTable pairDistances_;
    // The exhaustive search, answered faster but to the same bit; made for
    // the method at its first slice.
    std::optional<NearestColorFinder<T, N>> nearest_;

private:
    void prepareSearch();
    template <class Method, class Writer>
    void scan(Method &method, const Writer &write);
    std::uint32_t search(const ColorType &wanted);
    std::uint32_t chooseIndex(const ColorType &wanted);
};

template <typename T, int N>
Ditherer<T, N>::Ditherer(SharedPalette<T, N> palette, std::uint32_t rows, std::uint32_t cols, bool,
                         bool)
    : bits_(N == 3 ? 6 : 8), rows_(rows), cols_(cols), palette_(std::move(palette)) {
    prepareSearch();
}

template <typename T, int N>
Ditherer<T, N>::Ditherer(const Quant::Quantizer<T, N> &quantizer, std::uint32_t rows,
                         std::uint32_t cols, bool cacheFlag, bool sortedFlag)
    : bits_(quantizer.bits()),
      rows_(rows),
      cols_(cols),
      useCache_(cacheFlag),
      useSortedSearch_(sortedFlag),
      palette_(quantizer.palette()) {
    if (useCache_) cache_.emplace(bits_);
    bounds_.max = quantizer.bounds().max;
    bounds_.min = quantizer.bounds().min;
    bounds_.setCells(0, bits_);
    bounds_.updateCellWidths();
    prepareSearch();
}

template <typename T, int N>
void Ditherer<T, N>::prepareSearch() {
    if (!useSortedSearch_) return;
    sortByIntensity(*palette_);
    intensityIndex_.build(*palette_);
    pairDistances_.build(*palette_);
}

template <typename T, int N>
void Ditherer<T, N>::resetCache() {
    if (useCache_) cache_->forgetAll();
}

template <typename T, int N>
inline typename Ditherer<T, N>::ColorType Ditherer<T, N>::pixelAt(std::uint32_t row, std::uint32_t col) {
    return ColorType(inputPixel(row, col));
}

template <typename T, int N>
inline typename Ditherer<T, N>::Error Ditherer<T, N>::errorOf(const ColorType &, const ColorType &) {
    return Error{};
}

template <typename T, int N>
inline void Ditherer<T, N>::diffuseError(const Error &, std::uint32_t, std::uint32_t, std::uint32_t) {}

template <typename T, int N>
inline std::uint32_t Ditherer<T, N>::search(const ColorType &wanted) {
    return useSortedSearch_ ? sortedNearestIndex(*palette_, intensityIndex_, pairDistances_, wanted)
                            : nearest_->find(wanted);
}

// The cache never answers index 0: a stored 0 reads as "unknown", like the
// initial fill, and leads to a fresh search.
template <typename T, int N>
inline std::uint32_t Ditherer<T, N>::chooseIndex(const ColorType &wanted) {
    if (!useCache_) return search(wanted);
    const std::uint64_t key = cache_->keyOf(wanted, bounds_);
    const std::uint32_t cached = cache_->lookup(key);
    const std::uint32_t index = static_cast<std::int32_t>(cached) > 0 ? cached : search(wanted);
    cache_->store(key, index);
    return index;
}

// Method is the ditherer's own final class: its hooks are named, not looked
// up, so that they inline into the loop.
template <typename T, int N>
template <class Method, class Writer>
void Ditherer<T, N>::scan(Method &method, const Writer &write) {
    if (!useSortedSearch_ && !nearest_) nearest_.emplace(*palette_, !Method::kDiffusesError);
    for (std::uint32_t row = 0; row < rows_; ++row) {
        const bool backward = row % 2 == 1;
        const std::uint32_t step = backward ? kBackward : kForward;
        std::uint32_t col = backward ? cols_ - 1 : 0;
        method.Method::beginRow(row);
        for (std::uint32_t visited = 0; visited < cols_; ++visited, col += step) {
            // The pixel two ahead will be asked for near its own colour; its
            // search is then not kept waiting for memory.
            if (Method::kDiffusesError && visited + kWarmAhead < cols_ && !useSortedSearch_)
                nearest_->warm(ColorType(inputPixel(row, col + kWarmAhead * step)));
            const ColorType wanted = method.Method::pixelAt(row, col);
            const std::uint32_t index = chooseIndex(wanted);
            const ColorType &chosen = palette_->at(index);
            write(std::size_t{cols_} * row + col, index, chosen);
            method.Method::diffuseError(method.Method::errorOf(wanted, chosen), row, col, step);
        }
    }
}

#define TARVEX_DECLARE_DITHERER(T, N) extern template class Ditherer<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_DECLARE_DITHERER)
#undef TARVEX_DECLARE_DITHERER

}  // namespace ColorUtilities
