#include "gif_import/Compositor.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <new>

#include "gif_import/DecodeBudget.h"
#include "gif_import/Decoder.h"

namespace GifImport {
namespace {

// How a palette index draws: not at all (past the palette), always (a
// visible colour), or only onto a still transparent pixel.
enum class Stroke : std::uint8_t { Skip, Paint, PaintOntoClear };

struct Brush {
    std::array<PackedColor, 256> colors{};
    std::array<Stroke, 256> strokes{};
    bool everyIndexPaints = true;

    explicit Brush(const Palette &palette) {
        for (std::size_t i = 0; i < strokes.size(); ++i) {
            if (i >= palette.size()) {
                strokes[i] = Stroke::Skip;
                everyIndexPaints = false;
                continue;
            }
            colors[i] = palette[i];
            strokes[i] = alpha(palette[i]) != 0 ? Stroke::Paint : Stroke::PaintOntoClear;
            everyIndexPaints = everyIndexPaints && strokes[i] == Stroke::Paint;
        }
    }
};

void drawRow(const Brush &brush, const std::uint8_t *indices, PackedColor *target, std::uint32_t width) {
    if (brush.everyIndexPaints) {
        for (std::uint32_t c = 0; c < width; ++c) target[c] = brush.colors[indices[c]];
        return;
    }
    for (std::uint32_t c = 0; c < width; ++c) {
        const Stroke stroke = brush.strokes[indices[c]];
        if (stroke == Stroke::Paint || (stroke == Stroke::PaintOntoClear && alpha(target[c]) == 0))
            target[c] = brush.colors[indices[c]];
    }
}

// Canvases of drawing between snapshots. Four keeps the snapshots of an
// animation of whole-screen frames (four bytes a pixel) near its rasters (one).
constexpr std::uint64_t kCanvasesBetweenSnapshots = 4;

PackedColor *rectangleRow(std::vector<PackedColor> &canvas, const Frame &frame, std::uint32_t row,
                          std::uint32_t canvasWidth) {
    return canvas.data() + std::size_t{frame.top + row} * canvasWidth + frame.left;
}

}  // namespace

Palette drawingPalette(const Frame &frame, const Palette &globalPalette) {
    if (!frame.localPalette.empty()) return frame.localPalette;
    Palette palette = globalPalette;
    if (frame.hasTransparentIndex() &&
        static_cast<std::size_t>(frame.transparentIndex) < palette.size())
        palette[frame.transparentIndex] = withAlpha(palette[frame.transparentIndex], 0);
    return palette;
}

void drawFrame(const Frame &frame, const Palette &palette, PackedColor *canvas,
               std::uint32_t canvasWidth) {
    const Brush brush(palette);
    for (std::uint32_t r = 0; r < frame.height; ++r)
        drawRow(brush, frame.raster.data() + std::size_t{r} * frame.width,
                canvas + std::size_t{frame.top + r} * canvasWidth + frame.left, frame.width);
}

const std::vector<PackedColor> &FrameCompositor::picture(const Decoder &decoder, std::size_t index) {
    if (!consistent_ || drawnCount_ > index + 1) resumeBefore(decoder, index);
    consistent_ = false;
    while (drawnCount_ <= index) {
        drawNext(decoder);
        noteDrawing(decoder);
    }
    consistent_ = true;
    return canvas_;
}

std::size_t FrameCompositor::heldBytes() const {
    std::size_t pixels = canvas_.capacity() + saved_.capacity();
    for (const Snapshot &snapshot : snapshots_) pixels += snapshot.canvas.capacity() + snapshot.saved.capacity();
    return pixels * sizeof(PackedColor);
}

void FrameCompositor::resumeBefore(const Decoder &decoder, std::size_t index) {
    if (consistent_) replaying_ = true;
    drawnSinceSnapshot_ = 0;
    const auto after = std::upper_bound(snapshots_.begin(), snapshots_.end(), index + 1,
                                        [](std::size_t count, const Snapshot &s) { return count < s.drawnCount; });
    if (after == snapshots_.begin()) {
        restart(decoder);
        return;
    }
    const Snapshot &nearest = *std::prev(after);
    canvas_ = nearest.canvas;
    saved_ = nearest.saved;
    holdRestoreRoom(decoder);
    drawnCount_ = nearest.drawnCount;
    consistent_ = true;
}

// The restore buffer takes the largest rectangle at once, so that what the
// compositor holds, and hence what the budget lets through, does not depend
// on the order in which frames were asked for.
void FrameCompositor::holdRestoreRoom(const Decoder &decoder) {
    saved_.reserve(decoder.restorePreviousPixels);
}

// Snapshots are a shortcut only: one that does not fit the budget, or cannot
// be allocated, is not taken, and every picture stays the same.
void FrameCompositor::noteDrawing(const Decoder &decoder) {
    if (!replaying_ || decoder.canvasPixelCount == 0) return;
    const Frame &frame = *decoder.frames[drawnCount_ - 1];
    drawnSinceSnapshot_ += std::uint64_t{frame.width} * frame.height;
    if (drawnSinceSnapshot_ < kCanvasesBetweenSnapshots * decoder.canvasPixelCount) return;
    drawnSinceSnapshot_ = 0;
    // A replay from an earlier snapshot meets the later ones again.
    if (!snapshots_.empty() && snapshots_.back().drawnCount >= drawnCount_) return;
    if (!fitsSpareDecodeBudget((canvas_.size() + saved_.size()) * sizeof(PackedColor))) return;
    try {
        snapshots_.push_back(Snapshot{drawnCount_, canvas_, saved_});
    } catch (const std::bad_alloc &) {
    }
}

bool FrameCompositor::dropSnapshots() {
    if (snapshots_.empty()) return false;
    snapshots_ = std::vector<Snapshot>();
    return true;
}

// The snapshots stay: they serve reading backwards from the last frame.
void FrameCompositor::release() {
    // Assigning an empty list would keep the storage.
    canvas_ = std::vector<PackedColor>();
    saved_ = std::vector<PackedColor>();
    drawnCount_ = 0;
    consistent_ = false;
}

void FrameCompositor::restart(const Decoder &decoder) {
    canvas_.assign(decoder.canvasPixelCount, decoder.backgroundColor);
    holdRestoreRoom(decoder);
    drawnCount_ = 0;
    consistent_ = true;
}

void FrameCompositor::drawNext(const Decoder &decoder) {
    if (drawnCount_ > 0) disposeDrawn(decoder);
    const Frame &frame = *decoder.frames[drawnCount_];
    if (frame.disposal == RestorePrevious) {
        saved_.resize(std::size_t{frame.width} * frame.height);
        for (std::uint32_t r = 0; r < frame.height; ++r) {
            const PackedColor *row = rectangleRow(canvas_, frame, r, decoder.canvasWidth);
            std::copy_n(row, frame.width, saved_.begin() + std::ptrdiff_t{r} * frame.width);
        }
    }
    drawFrame(frame, drawingPalette(frame, decoder.globalPalette), canvas_.data(),
              decoder.canvasWidth);
    ++drawnCount_;
}

// The frame on show was drawn straight onto the canvas, which is what Keep
// and Unspecified leave for the next frame; the other two undo its rectangle.
void FrameCompositor::disposeDrawn(const Decoder &decoder) {
    const Frame &frame = *decoder.frames[drawnCount_ - 1];
    for (std::uint32_t r = 0; r < frame.height; ++r) {
        PackedColor *row = rectangleRow(canvas_, frame, r, decoder.canvasWidth);
        if (frame.disposal == RestoreBackground)
            std::fill_n(row, frame.width, decoder.backgroundColor);
        else if (frame.disposal == RestorePrevious)
            std::copy_n(saved_.begin() + std::ptrdiff_t{r} * frame.width, frame.width, row);
    }
}

}  // namespace GifImport
