#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
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
// name their own diffusion, and run the scan over their own final class so
// that it inlines into the loop.
template <typename T, int N>
class Ditherer {
public:
    using ColorType = Color<T, N>;
    // A pixel's samples as the scan holds them, in registers.
    using Samples = std::array<T, N + 1>;
    // Per channel, in the arithmetic that diffusion uses for T.
    using Error = std::array<typename DiffusedError<T>::Value, N + 1>;

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
    // Whether each pixel waits for the one before. Without, the colours
    // asked for are the picture's own, which repeat often; with, the errors
    // added make most of them new.
    static constexpr bool kDiffusesError = false;

    // What a method adds to the scan: the colour wanted at a pixel, the
    // error its chosen colour leaves, and where that error goes. Each method
    // class names its own, which the scan keeps in its frame; mapping alone
    // adds nothing.
    struct Diffusion {
        void beginRow(std::uint32_t) {}
        [[gnu::always_inline]] Samples pixelAt(const T *input, std::ptrdiff_t) const {
            Samples samples;
            for (int k = 0; k <= N; ++k) samples[k] = input[k];
            return samples;
        }
        [[gnu::always_inline]] Error errorOf(const Samples &, const Samples &) const { return {}; }
        [[gnu::always_inline]] void diffuseError(const Error &, std::ptrdiff_t, std::ptrdiff_t) {}
    };
    Diffusion startDiffusion() { return {}; }
    // Every final method class runs the scan over itself.
    virtual void mapSlice(const SliceOutput<T, N> &output) { scanAs(*this, output); }

    template <class Method>
    void scanAs(Method &method, const SliceOutput<T, N> &output) {
        std::visit([&](const auto &write) { scan(method, write); }, output);
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
    // The palette's samples without the colours' other parts, packed.
    std::vector<Samples> paletteSamples_;

private:
    void prepareSearch();
    template <class Method, class Writer>
    void scan(Method &method, const Writer &write);
    template <class Method, class Writer, class Search>
    void scanRows(Method &method, const Writer &write, const Search &search);
    std::uint32_t chooseIndex(const Samples &wanted);
    std::uint32_t chooseOtherwise(const ColorType &wanted);
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
[[gnu::always_inline]] inline std::uint32_t Ditherer<T, N>::chooseIndex(const Samples &wanted) {
    if (!useCache_ && !useSortedSearch_) [[likely]]
        return nearest_->find(wanted);
    return chooseOtherwise(ColorType(wanted.data()));
}

// The cache never answers index 0: a stored 0 reads as "unknown", like the
// initial fill, and leads to a fresh search.
template <typename T, int N>
std::uint32_t Ditherer<T, N>::chooseOtherwise(const ColorType &wanted) {
    const auto search = [&] {
        return useSortedSearch_ ? sortedNearestIndex(*palette_, intensityIndex_, pairDistances_, wanted)
                                : nearest_->find(wanted);
    };
    if (!useCache_) return search();
    const std::uint64_t key = cache_->keyOf(wanted, bounds_);
    const std::uint32_t cached = cache_->lookup(key);
    const std::uint32_t index = static_cast<std::int32_t>(cached) > 0 ? cached : search();
    cache_->store(key, index);
    return index;
}

// The search is chosen once a slice: the grid, asked directly, answers most
// searches of integer samples.
template <typename T, int N>
template <class Method, class Writer>
void Ditherer<T, N>::scan(Method &method, const Writer &write) {
    if (!useSortedSearch_ && !nearest_) nearest_.emplace(*palette_, !Method::kDiffusesError);
    if constexpr (std::is_integral_v<T>) {
        if (!useCache_ && !useSortedSearch_) {
            if (auto *grid = nearest_->grid()) {
                using Grid = std::remove_pointer_t<decltype(grid)>;
                struct GridSearch {
                    Grid *grid;
                    [[gnu::always_inline]] std::uint32_t operator()(const Samples &wanted) const {
                        return grid->find(wanted);
                    }
                };
                return scanRows(method, write, GridSearch{grid});
            }
        }
    }
    struct AnySearch {
        Ditherer *ditherer;
        [[gnu::always_inline]] std::uint32_t operator()(const Samples &wanted) const {
            return ditherer->chooseIndex(wanted);
        }
    };
    scanRows(method, write, AnySearch{this});
}

// Method is the ditherer's own final class: its diffusion is named, not
// looked up, so that it inlines into the loop.
template <typename T, int N>
template <class Method, class Writer, class Search>
void Ditherer<T, N>::scanRows(Method &method, const Writer &write, const Search &search) {
    const std::size_t rows = rows_;
    const std::ptrdiff_t cols = cols_;
    // Every search of an empty palette answers 0, which is no colour.
    if (palette_->size() == 0 && rows * cols > 0) palette_->at(0);
    paletteSamples_.clear();
    for (const ColorType &color : palette_->colors) paletteSamples_.push_back(color.values);
    const Samples *colors = paletteSamples_.data();
    const T *pixels = pixels_;
    auto diffusion = method.Method::startDiffusion();
    for (std::size_t row = 0; row < rows; ++row) {
        const bool backward = row % 2 == 1;
        const std::ptrdiff_t step = backward ? -1 : 1;
        const std::ptrdiff_t end = backward ? -1 : cols;
        const T *input = pixels + row * cols * (N + 1);
        diffusion.beginRow(static_cast<std::uint32_t>(row));
        for (std::ptrdiff_t col = backward ? cols - 1 : 0; col != end; col += step) {
            const Samples wanted = diffusion.pixelAt(input + col * (N + 1), col);
            const std::uint32_t index = search(wanted);
            const Samples &chosen = colors[index];
            write(row * cols + col, index, chosen);
            diffusion.diffuseError(diffusion.errorOf(wanted, chosen), col, step);
        }
    }
}

#define TARVEX_DECLARE_DITHERER(T, N) extern template class Ditherer<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_DECLARE_DITHERER)
#undef TARVEX_DECLARE_DITHERER

}  // namespace ColorUtilities
