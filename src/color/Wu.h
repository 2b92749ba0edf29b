#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "color/ColorCellCache.h"
#include "color/MeanChannel.h"
#include "color/Quantizer.h"
#include "host/MemoryBudget.h"

namespace Quant {

// Variance-minimising box splitting over cumulative colour moments: each cut
// is placed where it best separates the box's pixels, and the box with the
// largest variance is cut next. Produces the palette only.
template <typename T, int N>
class Wu final : public Quantizer<T, N> {
    using Base = Quantizer<T, N>;
    static constexpr bool kReal = std::is_floating_point_v<T>;
    static constexpr int kCorners = 1 << (N + 1);
    // Integer sums wrap, and differences of cumulative sums stay exact.
    using Moment = std::conditional_t<kReal, double, std::uint64_t>;
    using Sum = std::conditional_t<kReal, double, std::int64_t>;
    using Cells = std::array<std::uint32_t, N + 1>;

public:
    struct Box {
        Cells lower{};  // exclusive
        Cells upper{};  // inclusive
        std::uint64_t volume = 0;
    };

    Wu(std::uint32_t pixelCount, const T *pixels, std::uint32_t maxColors, std::uint8_t bits)
        : Base(pixelCount, pixels, maxColors), side_((std::uint32_t{1} << bits) + 1) {
        this->setPrecision(bits, 1);
        std::uint64_t cells = 1;
        for (int k = N; k >= 0; --k) {
            strides_[k] = cells;
            cells *= side_;
        }
        const std::uint64_t bytesPerCell = sizeof(std::uint32_t) + sizeof(Moment) * (N + 1) + sizeof(double);
        OstrelUtils::requireTableBytes(OstrelUtils::saturatedProduct(cells, bytesPerCell));
        weights_.assign(cells, 0);
        for (auto &moment : moments_) moment.assign(cells, 0);
        squares_.assign(cells, 0.0);
    }

    void quantize() override {
        buildHistogram();
        cumulateAll();
        for (const Box &box : splitBoxes()) appendColor(box);
    }

    void reset() override {
        std::fill(weights_.begin(), weights_.end(), 0);
        for (auto &moment : moments_) std::fill(moment.begin(), moment.end(), 0);
        std::fill(squares_.begin(), squares_.end(), 0.0);
    }

private:
    // Real cells are not cut to 32 bits here, so that a sample outside the
    // box falls outside the tables instead of into the zero plane.
    std::uint64_t cellOf(T sample, int k) const {
        if constexpr (kReal)
            return static_cast<std::uint64_t>(ColorUtilities::CellRule<T>::wideCell(sample, k, this->bounds_));
        else
            return ColorUtilities::CellRule<T>::cell(sample, k, this->bounds_);
    }

    void buildHistogram() {
        const T *pixel = this->pixels_;
        for (std::uint32_t i = 0; i < this->pixelCount_; ++i, pixel += N + 1) {
            std::uint64_t position = 0;
            for (int k = 0; k <= N; ++k) position += cellOf(pixel[k], k) * strides_[k];
            if (position >= weights_.size()) throw std::out_of_range("invalid vector<T> subscript");
            ++weights_[position];
            double square = 0.0;
            for (int k = 0; k <= N; ++k) {
                moments_[k][position] += static_cast<Moment>(pixel[k]);
                square += static_cast<double>(pixel[k]) * static_cast<double>(pixel[k]);
            }
            squares_[position] += square;
        }
    }

    // Every cell then holds the sum over the cells at or below it in every
    // channel: prefix sums along channel 0, then channel 1, and so on.
    template <typename V>
    void cumulate(std::vector<V> &table) const {
        for (int axis = 0; axis <= N; ++axis) {
            // Blocks of `side` planes along the axis; each plane after the
            // first adds the one below it.
            const std::uint64_t stride = strides_[axis], block = stride * side_;
            for (std::uint64_t start = 0; start < table.size(); start += block)
                for (std::uint64_t position = start + stride; position < start + block; ++position)
                    table[position] += table[position - stride];
        }
    }

    void cumulateAll() {
        cumulate(weights_);
        for (auto &moment : moments_) cumulate(moment);
        cumulate(squares_);
    }

    // The sum of a table over the box, by inclusion-exclusion over its
    // corners in ascending mask order. With `fixedAxis` >= 0, the sum over the
    // box's face where that axis is at `fixedAt` (Top); else over the box.
    template <typename Result, typename V>
    Result sumOver(const Box &box, const std::vector<V> &table, int fixedAxis = -1,
                   std::uint32_t fixedAt = 0) const {
        const int free = fixedAxis < 0 ? N + 1 : N;
        Result sum{};
        for (int mask = 0; mask < (1 << free); ++mask) {
            std::uint64_t position = 0;
            int bit = 0, upperCount = 0;
            for (int k = 0; k <= N; ++k) {
                std::uint32_t at = fixedAt;
                if (k != fixedAxis) {
                    const bool upper = (mask >> bit++) & 1;
                    upperCount += upper;
                    at = upper ? box.upper[k] : box.lower[k];
                }
                position += at * strides_[k];
            }
            const Result value = static_cast<Result>(table[position]);
            if ((upperCount & 1) == (free & 1))
                sum = static_cast<Result>(sum + value);
            else
                sum = static_cast<Result>(sum - value);
        }
        return sum;
    }

    Sum momentOver(const Box &box, int k, int fixedAxis = -1, std::uint32_t at = 0) const {
        return wrapped(sumOver<Moment>(box, moments_[k], fixedAxis, at));
    }
    std::int64_t weightOver(const Box &box, int fixedAxis = -1, std::uint32_t at = 0) const {
        return static_cast<std::int32_t>(sumOver<std::uint32_t>(box, weights_, fixedAxis, at));
    }

    static Sum wrapped(Moment m) { return static_cast<Sum>(m); }
    // Integer squares are unsigned 64-bit products (wrapping past 2^64)
    // before they become doubles: a square past 2^63 stays positive.
    static double squared(Sum m) {
        if constexpr (kReal)
            return m * m;
        else
            return static_cast<double>(static_cast<std::uint64_t>(m) * static_cast<std::uint64_t>(m));
    }

    static double sumOfSquares(const std::array<Sum, N + 1> &sums) {
        double total = 0.0;
        for (int k = 0; k <= N; ++k) total += squared(sums[k]);
        return total;
    }

    double variance(const Box &box) const {
        std::array<Sum, N + 1> sums;
        for (int k = 0; k <= N; ++k) sums[k] = momentOver(box, k);
        return sumOver<double>(box, squares_) -
               sumOfSquares(sums) / static_cast<double>(weightOver(box));
    }

    struct Split {
        double value = 0.0;
        std::int64_t cut = -1;
    };

    Split maximize(const Box &box, int dir, const std::array<Sum, N + 1> &whole,
                   std::int64_t wholeWeight) const {
        std::array<Sum, N + 1> base, half, rest;
        for (int k = 0; k <= N; ++k) base[k] = momentOver(box, k, dir, box.lower[dir]);
        const std::int64_t baseWeight = weightOver(box, dir, box.lower[dir]);
        Split best;
        for (std::uint32_t pos = box.lower[dir] + 1; pos < box.upper[dir]; ++pos) {
            for (int k = 0; k <= N; ++k) half[k] = difference(momentOver(box, k, dir, pos), base[k]);
            const std::int64_t halfWeight = weightOver(box, dir, pos) - baseWeight;
            if (halfWeight == 0) continue;
            double value = sumOfSquares(half) / static_cast<double>(halfWeight);
            for (int k = 0; k <= N; ++k) rest[k] = difference(whole[k], half[k]);
            if (wholeWeight == halfWeight) continue;
            value += sumOfSquares(rest) / static_cast<double>(wholeWeight - halfWeight);
            if (value > best.value) best = {value, pos};
        }
        return best;
    }

    static Sum difference(Sum a, Sum b) {
        if constexpr (kReal)
            return a - b;
        else
            return static_cast<Sum>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
    }

    static std::uint64_t volumeOf(const Box &box) {
        std::uint64_t volume = 1;
        for (int k = 0; k <= N; ++k) volume *= box.upper[k] - box.lower[k];
        return volume;
    }

    // Cuts `first` where it best separates its pixels; `second` receives the
    // upper part. False, with both untouched, when no cut separates them.
    bool cut(Box &first, Box &second) const {
        std::array<Sum, N + 1> whole;
        for (int k = 0; k <= N; ++k) whole[k] = momentOver(first, k);
        const std::int64_t wholeWeight = weightOver(first);
        Split best{-1.0, -1};
        int dir = 0;
        for (int k = 0; k <= N; ++k) {
            const Split split = maximize(first, k, whole, wholeWeight);
            if (split.value > best.value) best = split, dir = k;
        }
        if (best.cut == -1) return false;
        second = first;
        first.upper[dir] = static_cast<std::uint32_t>(best.cut);
        second.lower[dir] = static_cast<std::uint32_t>(best.cut);
        first.volume = volumeOf(first);
        second.volume = volumeOf(second);
        return true;
    }

    double varianceIfSplittable(const Box &box) const { return box.volume > 1 ? variance(box) : 0.0; }

    std::vector<Box> splitBoxes() const {
        const std::uint32_t wanted = this->maxColors_;
        std::vector<Box> boxes;
        if (wanted == 0) return boxes;
        Box whole;
        whole.upper.fill(side_ - 1);
        whole.volume = static_cast<std::uint64_t>(std::pow(static_cast<double>(side_ - 1), N + 1));
        boxes.push_back(whole);
        std::vector<double> variances(1, 0.0);
        std::uint32_t next = 0;
        for (std::uint32_t i = 1; i < wanted; ++i) {
            if (boxes.size() <= i) boxes.resize(i + 1), variances.resize(i + 1);
            if (cut(boxes[next], boxes[i])) {
                variances[next] = varianceIfSplittable(boxes[next]);
                variances[i] = varianceIfSplittable(boxes[i]);
            } else {
                variances[next] = 0.0;
                --i;  // the same box number is tried again with another box
            }
            next = 0;
            for (std::uint32_t k = 1; k <= i; ++k)
                if (variances[k] > variances[next]) next = k;
            if (variances[next] <= 0.0) {
                boxes.resize(i + 1);
                return boxes;
            }
        }
        return boxes;
    }

    void appendColor(const Box &box) {
        const std::int64_t weight = weightOver(box);
        if (weight == 0) return;
        const auto &bounds = this->bounds_;
        ColorUtilities::Color<T, N> color;
        for (int k = 0; k <= N; ++k) {
            const Sum moment = momentOver(box, k);
            if constexpr (kReal) {
                color[k] = channelFromMean<T>(moment / static_cast<double>(weight), bounds.min[k],
                                              bounds.max[k]);
            } else {
                const std::int64_t mean = moment / static_cast<std::int32_t>(weight);
                color[k] = static_cast<T>(std::max<std::int64_t>(
                    bounds.min[k], std::min<std::int64_t>(bounds.max[k], mean)));
            }
        }
        this->palette_->colors.push_back(color);
    }

    std::uint32_t side_;
    std::array<std::uint64_t, N + 1> strides_{};
    std::vector<std::uint32_t> weights_;
    std::array<std::vector<Moment>, N + 1> moments_;
    std::vector<double> squares_;
};

}  // namespace Quant
