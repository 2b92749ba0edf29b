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
    explicit NearestColorFinder(const Palette<T, N> &palette) : palette_(palette) {
        if constexpr (std::is_integral_v<T>)
            grid_.emplace(palette);
        else
            memo_.emplace();
    }

    std::uint32_t find(const Color<T, N> &target) {
        if constexpr (std::is_integral_v<T>) {
            return grid_->find(target);
        } else {
            std::uint32_t index;
            if (memo_->recall(target, &index)) return index;
            index = nearestColorIndex(palette_, target);
            memo_->remember(target, index);
            return index;
        }
    }

private:
    const Palette<T, N> &palette_;
    std::optional<CandidateGrid<T, N>> grid_;
    std::optional<NearestColorMemo<T, N>> memo_;
};

}  // namespace ColorUtilities
