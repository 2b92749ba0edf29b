#pragma once

#include <cstddef>
#include <vector>

#include "color/ColorDistance.h"
#include "color/Palette.h"

namespace ColorUtilities {

// The distance between every two palette colours, for pruning the sorted
// search.
class PairDistanceTable {
public:
    template <typename T, int N>
    void build(const Palette<T, N> &palette) {
        const std::size_t size = palette.size();
        distances_.assign(size, std::vector<double>(size, 0.0));
        for (std::size_t i = 0; i < size; ++i)
            for (std::size_t j = i + 1; j < size; ++j)
                distances_[i][j] = distances_[j][i] =
                    colorDistance(palette.colors[i], palette.colors[j]);
    }

    double operator()(std::size_t i, std::size_t j) const { return distances_[i][j]; }
    std::size_t size() const noexcept { return distances_.size(); }

private:
    std::vector<std::vector<double>> distances_;
};

}  // namespace ColorUtilities
