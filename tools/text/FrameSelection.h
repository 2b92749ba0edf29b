#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvex_cli {

// Frame numbers as users write them: "2-5,9", "7", "3-" (to the last).
struct FrameRange {
    long first;
    std::optional<long> last;  // none: to the last frame
};

// Throws std::invalid_argument saying what is wrong.
std::vector<FrameRange> parseFrameRanges(std::string_view text);

// The frames the ranges select, in the order given, each once; throws
// std::invalid_argument for a frame beyond `count`.
std::vector<long> selectFrames(const std::vector<FrameRange> &ranges, long count);

// A file-name pattern with one number in it, printf style: "frame-%03d.png".
class NumberedName {
public:
    // Throws std::invalid_argument unless there is exactly one %d, %Nd or
    // %0Nd (and %% for a percent sign), and no directory part.
    explicit NumberedName(std::string pattern);

    std::string operator()(long number) const;
    // Whether a name is one the pattern makes, for some number.
    bool matches(std::string_view name) const;

private:
    std::string prefix_, suffix_;
    int width_ = 0;
    bool zeros_ = false;
};

}  // namespace tarvex_cli
