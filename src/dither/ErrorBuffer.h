#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace ColorUtilities {

// The errors waiting to be added to pixels not yet visited, one cell of N+1
// channels per pixel, laid over storage that the ditherer owns. A pixel's
// error comes from its own row and the row above, so two rows of cells are
// all that is ever read: row r lives in slot r % 2, and a slot is cleared
// just before its row starts receiving errors. Every row has two guard cells
// on each side, and the row below the last one is never read, so errors
// pushed off the image land somewhere and are lost.
template <typename Value, int N>
class ErrorBuffer {
public:
    using Cell = std::array<Value, N + 1>;

    ErrorBuffer(std::vector<Cell> &cells, std::uint32_t cols) : cells_(cells), cols_(cols) {}

    void reset() { cells_.assign(2 * rowCells(), Cell{}); }

    // Before row `row` is scanned: the row below starts empty.
    void beginRow(std::uint32_t row) {
        const auto first = cells_.begin() + static_cast<std::ptrdiff_t>(slotOf(row + 1));
        std::fill(first, first + static_cast<std::ptrdiff_t>(rowCells()), Cell{});
    }

    // Row `row`'s cell of column 0; the guards are at columns -2, -1, cols
    // and cols + 1.
    Cell *row(std::uint32_t r) { return cells_.data() + slotOf(r) + 2; }

private:
    std::size_t rowCells() const { return std::size_t{cols_} + 4; }
    std::size_t slotOf(std::uint32_t row) const { return (row & 1u) * rowCells(); }

    std::vector<Cell> &cells_;
    std::uint32_t cols_;
};

}  // namespace ColorUtilities
