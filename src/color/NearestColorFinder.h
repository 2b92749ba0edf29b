#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <variant>

#include "color/CandidateGrid.h"
#include "color/NearestColor.h"
#include "color/NearestColorMemo.h"
#include "color/Palette.h"
#include "color/PaletteTree.h"

namespace ColorUtilities {

// The exhaustive search's answers, found faster: by the candidate grid for
// integer samples and palettes of moderate size, whose boxes then hold few
// colours each; by the palette tree for larger palettes and real samples.
// Real samples that are not finite are searched exhaustively.
template <typename T, int N>
class NearestColorFinder {
public:
    // Answers are remembered per exact colour when rememberAnswers is set,
    // which pays where the colours asked for repeat.
    explicit NearestColorFinder(const Palette<T, N> &palette, bool rememberAnswers = true)
        : palette_(palette) {
        if constexpr (kIntegral) {
            if (palette.size() <= kGridColors) {
                grid_.emplace(palette, rememberAnswers);
                return;
            }
        }
        if (PaletteTree<T, N>::searchable(palette)) {
            tree_ = PaletteTree<T, N>(palette);
            treeSearches_ = true;
        }
        if (rememberAnswers) memo_.emplace();
    }

    std::uint32_t find(const Color<T, N> &target) { return find(target.values); }

    [[gnu::always_inline]] std::uint32_t find(const std::array<T, N + 1> &samples) {
        if constexpr (kIntegral)
            if (grid_) return grid_->find(samples);
        return findAnyhow(Color<T, N>(samples.data()));
    }

    // The grid, where it answers every search, for a caller that asks it
    // directly.
    auto *grid() noexcept {
        if constexpr (kIntegral) return grid_ ? &*grid_ : nullptr;
        else return static_cast<std::monostate *>(nullptr);
    }

private:
    [[gnu::noinline]] std::uint32_t findAnyhow(const Color<T, N> &target) {
        std::uint32_t index;
        if (memo_ && memo_->recall(target, &index)) return index;
        index = treeSearches_ && finite(target) ? tree_.find(target, last_) : nearestColorIndex(palette_, target);
        last_ = index;
        if (memo_) memo_->remember(target, index);
        return index;
    }

    static constexpr bool kIntegral = std::is_integral_v<T>;
    // Past this many colours the grid's boxes near a picture's colours hold
    // too many of them.
    static constexpr std::size_t kGridColors = 4096;

    static bool finite(const Color<T, N> &target) {
        if constexpr (std::is_floating_point_v<T>)
            for (int k = 0; k <= N; ++k)
                if (!std::isfinite(target[k])) return false;
        return true;
    }

    const Palette<T, N> &palette_;
    std::optional<std::conditional_t<kIntegral, CandidateGrid<T, N>, std::monostate>> grid_;
    // Empty unless it searches: an optional here trips a false warning of
    // uninitialised use in some builds.
    PaletteTree<T, N> tree_;
    bool treeSearches_ = false;
    // Successive targets of a picture lie near each other.
    std::uint32_t last_ = kUnknownIndex;
    std::optional<NearestColorMemo<T, N>> memo_;
};

}  // namespace ColorUtilities
