#pragma once

#include <cstdint>
#include <optional>
#include <type_traits>

#include "color/CandidateGrid.h"
#include "color/NearestColor.h"
#include "color/NearestColorMemo.h"
#include "color/Palette.h"

namespace ColorUtilities {

// The exhaustive search's answers, found faster: for integer samples searched
// among few palette colours; for real samples remembered per colour and
// otherwise searched exhaustively, since pruning by bounds computed in
// floating point could drop a colour the exhaustive search would pick.
template <typename T, int N>
class NearestColorFinder {
public:
    // Answers are remembered per exact colour when rememberAnswers is set,
    // which pays where the colours asked for repeat.
    explicit NearestColorFinder(const Palette<T, N> &palette, bool rememberAnswers = true)
        : palette_(palette) {
        if constexpr (std::is_integral_v<T>)
            grid_.emplace(palette, rememberAnswers);
        else if (rememberAnswers)
            memo_.emplace();
    }

    std::uint32_t find(const Color<T, N> &target) {
        if constexpr (std::is_integral_v<T>) {
            return grid_->find(target);
        } else {
            std::uint32_t index;
            if (!memo_) return nearestColorIndex(palette_, target);
            if (memo_->recall(target, &index)) return index;
            index = nearestColorIndex(palette_, target);
            memo_->remember(target, index);
            return index;
        }
    }

    // A hint of what may be asked soon; answers do not depend on it.
    void warm(const Color<T, N> &target) const {
        if constexpr (std::is_integral_v<T>) grid_->warm(target);
    }

private:
    const Palette<T, N> &palette_;
    std::optional<CandidateGrid<T, N>> grid_;
    std::optional<NearestColorMemo<T, N>> memo_;
};

}  // namespace ColorUtilities
