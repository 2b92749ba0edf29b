#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace ColorUtilities {

// The errors waiting to be added to pixels not yet visited, one cell of N+1
// channels per pixel, laid over storage that the ditherer owns. Every row has
// two guard cells on each side and a guard row lies below the image, so that
// errors pushed off the image land somewhere and are never read back.
// Indices are 32-bit unsigned, so a step of -1 is 0xFFFFFFFF and column
// arithmetic wraps into the left guard cells.
template <int N>
class ErrorBuffer {
public:
    using Cell = std::array<double, N + 1>;

    ErrorBuffer(std::vector<Cell> &cells, std::uint32_t cols) : cells_(cells), cols_(cols) {}

    void reset(std::uint32_t rows) {
        cells_.assign(std::uint32_t{(cols_ + 4) * (rows + 1)}, Cell{});
    }

    Cell &at(std::uint32_t row, std::uint32_t col) {
        const std::uint32_t index = (cols_ + 4) * row + col + 2;
        if (index >= cells_.size()) throw std::out_of_range("invalid vector<T> subscript");
        return cells_[index];
    }

private:
    std::vector<Cell> &cells_;
    std::uint32_t cols_;
};

}  // namespace ColorUtilities
