#pragma once

#include <cstdint>
#include <vector>

#include "gif_import/PackedColor.h"
#include "quorbel/QuorbelLibrary.h"

namespace GifImport {

// A host image of composited frames (8-bit, RGB, interleaved), freed unless
// handed to the kernel as the result.
class FrameImage {
public:
    explicit FrameImage(QuorbelImageFunctions functions) : functions_(functions) {}
    ~FrameImage();
    FrameImage(const FrameImage &) = delete;
    FrameImage &operator=(const FrameImage &) = delete;

    // A 2-D image when `slices` is 0, else a stack of that many. Returns the
    // kernel's creation code.
    int create(mint slices, std::uint32_t width, std::uint32_t height, int channels);

    // Copies one canvas-sized picture into the slice (0 for a 2-D image).
    void setSlice(std::size_t slice, const std::vector<PackedColor> &picture);

    void passToResult(MArgument result);

private:
    QuorbelImageFunctions functions_;
    MImage image_ = nullptr;
    int channels_ = 0;
};

}  // namespace GifImport
