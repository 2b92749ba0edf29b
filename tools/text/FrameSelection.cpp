#include "FrameSelection.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>

#include "NumberText.h"

namespace tarvex_cli {
namespace {

long frameNumber(std::string_view text, std::string_view whole) {
    const auto number = parseInt64(text);
    if (!number || *number < 1 || text.front() == '+')
        throw std::invalid_argument("'" + std::string(whole) + "' is not a list of frame numbers from 1 on, "
                                    "such as 2-5,9");
    return static_cast<long>(*number);
}

FrameRange parseRange(std::string_view item) {
    const std::size_t dash = item.find('-');
    if (dash == std::string_view::npos) {
        const long frame = frameNumber(item, item);
        return {frame, frame};
    }
    const long first = frameNumber(item.substr(0, dash), item);
    if (dash + 1 == item.size()) return {first, std::nullopt};
    const long last = frameNumber(item.substr(dash + 1), item);
    if (last < first) throw std::invalid_argument("'" + std::string(item) + "' runs backwards");
    return {first, last};
}

bool allDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

std::string unescapePercents(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && (i + 1 >= text.size() || text[i + 1] != '%'))
            throw std::invalid_argument("a name pattern holds one number, %d or %03d; write %% for a percent sign");
        out += text[i];
        if (text[i] == '%') ++i;
    }
    return out;
}

}  // namespace

std::vector<FrameRange> parseFrameRanges(std::string_view text) {
    std::vector<FrameRange> ranges;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        const std::string_view item = text.substr(start, comma - start);
        if (item.empty()) throw std::invalid_argument("'" + std::string(text) + "' has an empty item");
        ranges.push_back(parseRange(item));
        if (comma == std::string_view::npos) return ranges;
        start = comma + 1;
    }
}

std::vector<long> selectFrames(const std::vector<FrameRange> &ranges, long count) {
    std::vector<long> frames;
    std::set<long> seen;
    for (const FrameRange &range : ranges) {
        const long last = range.last.value_or(count);
        if (range.first > count || last > count)
            throw std::invalid_argument("there is no frame " + std::to_string(std::max(range.first, last)) +
                                        " (" + countOf(count, "frame") + ")");
        for (long frame = range.first; frame <= last; ++frame)
            if (seen.insert(frame).second) frames.push_back(frame);
    }
    return frames;
}

NumberedName::NumberedName(std::string pattern) {
    if (pattern.find('/') != std::string::npos)
        throw std::invalid_argument("a name pattern names files in the output directory, without a '/'");
    std::size_t at = 0;
    while ((at = pattern.find('%', at)) != std::string::npos && at + 1 < pattern.size() && pattern[at + 1] == '%')
        at += 2;
    if (at == std::string::npos) throw std::invalid_argument("a name pattern needs a number in it, such as %03d");
    const std::size_t d = pattern.find('d', at);
    const std::string_view flags = std::string_view(pattern).substr(at + 1, d == std::string::npos ? 0 : d - at - 1);
    if (d == std::string::npos || (!flags.empty() && !allDigits(flags)) || flags.size() > 2)
        throw std::invalid_argument("a name pattern holds its number as %d, %3d or %03d");
    zeros_ = flags.starts_with('0');
    width_ = flags.empty() ? 0 : std::stoi(std::string(flags));
    prefix_ = unescapePercents(std::string_view(pattern).substr(0, at));
    suffix_ = unescapePercents(std::string_view(pattern).substr(d + 1));
}

std::string NumberedName::operator()(long number) const {
    std::string digits = std::to_string(number);
    if (digits.size() < std::size_t(width_)) digits.insert(0, std::size_t(width_) - digits.size(), zeros_ ? '0' : ' ');
    return prefix_ + digits + suffix_;
}

bool NumberedName::matches(std::string_view name) const {
    if (name.size() <= prefix_.size() + suffix_.size() || !name.starts_with(prefix_) || !name.ends_with(suffix_))
        return false;
    std::string_view number = name.substr(prefix_.size(), name.size() - prefix_.size() - suffix_.size());
    while (!number.empty() && number.front() == ' ') number.remove_prefix(1);
    return allDigits(number);
}

}  // namespace tarvex_cli
