#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "GifBuilder.h"
#include "Plugin.h"

namespace gif_test {

// The colours the tests draw with; Picture::rows() names them by letter.
inline const Rgb kBlack{0, 0, 0}, kRed{255, 0, 0}, kGreen{0, 255, 0}, kBlue{0, 0, 255},
    kWhite{255, 255, 255}, kYellow{255, 255, 0}, kCyan{0, 255, 255}, kMagenta{255, 0, 255};
// Index order of the usual test palette: K R G B W Y C M.
inline const ColorTable kEight{kBlack, kRed, kGreen, kBlue, kWhite, kYellow, kCyan, kMagenta};

// A host image copied out of the kernel (and freed there).
struct Picture {
    int code = 0;
    bool written = false;
    long width = 0, height = 0, channels = 0, slices = 0, rank = 0;
    std::vector<std::uint8_t> samples;

    // One string per row: a letter of K R G B W Y C M per opaque pixel, the
    // lowercase letter for a transparent one, '?' for any other colour.
    std::vector<std::string> rows(long slice = 0) const;
    std::vector<std::uint8_t> pixel(long slice, long x, long y) const;  // always RGBA
};

struct Tensor {
    int code = 0;
    bool written = false;
    std::vector<long> dimensions, values;
};

// The exports that answer over a link, in the order they are declared.
inline const char *const kLinkReaders[] = {"ReadFileMetadata", "ReadFrameMetadata", "ReadPalettes",
                                           "ReadRasterBits"};

Picture readOneFrame(const std::string &path, long frameNumber);
Picture readAllFrames(const std::string &path);
Tensor readGlobalPalette(const std::string &path);
// Returns the code; *removed receives the boolean result.
int clearCache(const std::string &path, bool *removed = nullptr);

// Calls a link export with {path}; the answer in input form.
std::string linkAnswer(const char *exportName, const std::string &path, int *code);

// Sets the bytes that decoded files may hold together for the life of the
// object, so that no answer depends on the machine's memory.
class ScopedDecodeBudget {
public:
    explicit ScopedDecodeBudget(std::uint64_t bytes);
    ~ScopedDecodeBudget();
    ScopedDecodeBudget(const ScopedDecodeBudget &) = delete;
    ScopedDecodeBudget &operator=(const ScopedDecodeBudget &) = delete;

private:
    std::string previous_;
    bool hadPrevious_;
};

}  // namespace gif_test
