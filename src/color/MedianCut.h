#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "color/ColorCellCache.h"
#include "color/MeanChannel.h"
#include "color/Quantizer.h"
#include "host/MemoryBudget.h"

namespace Quant {

// Counts the colours in a dense histogram of cells, then cuts the colour
// space into boxes of occupied cells until there are as many boxes as colours
// were asked for. Each box becomes the count-weighted mean of its cells'
// centres, so palette colours are cell centres, never pixel values.
template <typename T, int N>
class MedianCut final : public Quantizer<T, N> {
    using Base = Quantizer<T, N>;
    using Cells = std::array<std::uint32_t, N + 1>;

public:
    struct ColorBox {
        Cells lo{};
        Cells hi{};  // inclusive
        double diagonal = 0.0;
        std::uint64_t volume = 0;  // kept with the box, never read
        std::uint64_t cells = 0;   // occupied histogram cells, not pixels
    };

    MedianCut(std::uint32_t pixelCount, const T *pixels, std::uint32_t maxColors, std::uint8_t bits)
        : Base(pixelCount, pixels, maxColors), histBits_(bits), histSide_(std::uint32_t{1} << bits) {
        this->setPrecision(bits, 0);
        std::uint64_t total = 1;
        for (int k = N; k >= 0; --k) {
            strides_[k] = total;
            total *= histSide_;
        }
        OstrelUtils::requireTableBytes(OstrelUtils::saturatedProduct(total, sizeof(std::uint32_t)));
        counts_.assign(total, 0);
    }

    void quantize() override {
        countPixels();
        std::vector<ColorBox> boxes = cutBoxes();
        for (const ColorBox &box : boxes) this->palette_->colors.push_back(boxColor(box));
        produced_ = boxes.size();
    }

    void reset() override { std::fill(counts_.begin(), counts_.end(), 0); }

    std::uint64_t produced() const noexcept { return produced_; }

private:
    void countPixels() {
        const T *pixel = this->pixels_;
        for (std::uint32_t i = 0; i < this->pixelCount_; ++i, pixel += N + 1) {
            std::uint64_t position = 0;
            for (int k = 0; k <= N; ++k)
                position += std::uint64_t{ColorUtilities::CellRule<T>::cell(pixel[k], k, this->bounds_)} *
                            strides_[k];
            if (position >= counts_.size()) throw std::out_of_range("invalid vector<T> subscript");
            ++counts_[position];
        }
    }

    std::vector<ColorBox> cutBoxes() {
        std::vector<ColorBox> boxes;
        boxes.reserve(std::min<std::uint64_t>(this->maxColors_, counts_.size()));
        ColorBox first;
        first.hi.fill(histSide_ - 1);
        first.volume = static_cast<std::uint64_t>(std::pow(histSide_ - 1.0, N + 1));
        boxes.push_back(first);
        shrinkBox(boxes.back());
        const auto wanted = static_cast<std::int32_t>(this->maxColors_);
        while (static_cast<std::int32_t>(boxes.size()) < wanted) {
            const std::size_t chosen = chooseBox(boxes);
            if (boxes[chosen].cells < 2) break;
            boxes.push_back(boxes[chosen]);
            splitBox(boxes[chosen], boxes.back());
        }
        return boxes;
    }

    // While the boxes are few, the most crowded one; later, the widest.
    std::size_t chooseBox(const std::vector<ColorBox> &boxes) const {
        const bool byCells = 2 * static_cast<std::int64_t>(boxes.size()) <= this->maxColors_;
        std::size_t best = 0;
        for (std::size_t i = 1; i < boxes.size(); ++i) {
            const bool larger = byCells ? boxes[i].cells > boxes[best].cells
                                        : boxes[i].diagonal > boxes[best].diagonal;
            if (larger) best = i;
        }
        return best;
    }

    // Halves the longest side at the middle of its occupied range.
    void splitBox(ColorBox &lower, ColorBox &upper) {
        int axis = 0;
        for (int k = 1; k <= N; ++k)
            if (lower.hi[k] - lower.lo[k] > lower.hi[axis] - lower.lo[axis]) axis = k;
        const std::uint32_t mid = (lower.lo[axis] + lower.hi[axis]) >> 1;
        lower.hi[axis] = mid;
        upper.lo[axis] = mid + 1;
        shrinkBox(lower);
        shrinkBox(upper);
    }

    // Calls visit(cell coordinates, count) for every occupied cell of the box,
    // in row-major order.
    template <class Visit>
    void forEachOccupiedCell(const ColorBox &box, Visit &&visit) const {
        Cells cell = box.lo;
        while (true) {
            std::uint64_t position = 0;
            for (int k = 0; k < N; ++k) position += cell[k] * strides_[k];
            const std::uint32_t *row = counts_.data() + position;
            for (std::uint32_t last = box.lo[N]; last <= box.hi[N]; ++last)
                if (const std::uint32_t count = row[last]; count != 0) {
                    cell[N] = last;
                    visit(cell, count);
                }
            int k = N - 1;
            while (k >= 0 && cell[k] == box.hi[k]) cell[k] = box.lo[k], --k;
            if (k < 0) return;
            ++cell[k];
        }
    }

    void shrinkBox(ColorBox &box) const {
        Cells newLo = box.hi, newHi = box.lo;
        std::uint64_t occupied = 0;
        forEachOccupiedCell(box, [&](const Cells &cell, std::uint32_t) {
            ++occupied;
            for (int k = 0; k <= N; ++k) {
                newLo[k] = std::min(newLo[k], cell[k]);
                newHi[k] = std::max(newHi[k], cell[k]);
            }
        });
        box.lo = newLo;
        box.hi = newHi;
        box.cells = occupied;
        box.diagonal = 0.0;
        for (int k = 0; k <= N; ++k) {
            const double side = (box.hi[k] - box.lo[k] + 1) * 1.0;
            box.diagonal += side * side;
        }
    }

    ColorUtilities::Color<T, N> boxColor(const ColorBox &box) const {
        const auto &bounds = this->bounds_;
        std::array<double, N + 1> sums{};
        std::uint64_t total = 0;
        forEachOccupiedCell(box, [&](const Cells &cell, std::uint32_t count) {
            for (int k = 0; k <= N; ++k) {
                const double centre = std::min<double>((cell[k] + 0.5) * bounds.cellWidth[k] + bounds.min[k],
                                                       bounds.max[k]);
                sums[k] += centre * count;
            }
            total += count;
        });
        ColorUtilities::Color<T, N> color;
        for (int k = 0; k <= N; ++k)
            color[k] = channelFromMean<T>(sums[k] / static_cast<double>(total), bounds.min[k], bounds.max[k]);
        return color;
    }

    std::uint32_t histBits_;
    std::uint32_t histSide_;
    std::array<std::uint64_t, N + 1> strides_{};
    std::vector<std::uint32_t> counts_;
    std::uint64_t produced_ = 0;
};

}  // namespace Quant
