#include "NumberText.h"

#include <charconv>
#include <cmath>

namespace tarvex_cli {
namespace {

// from_chars refuses a leading '+', which people write naturally.
std::string_view withoutPlus(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

template <typename Number>
std::optional<Number> parseWhole(std::string_view text) {
    text = withoutPlus(text);
    Number value{};
    const char *end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || text.empty()) return std::nullopt;
    return value;
}

std::string finishReal(std::string text) {
    if (text.find_first_not_of("-0123456789") == std::string::npos) text += '.';
    return text;
}

template <typename Real>
std::string formatFinite(Real value) {
    char buffer[64];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    (void)error;  // the buffer holds any shortest representation
    return finishReal(std::string(buffer, end));
}

template <typename Real>
std::string formatAny(Real value) {
    if (std::isnan(value)) return "Indeterminate";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    return formatFinite(value);
}

}  // namespace

std::optional<std::int64_t> parseInt64(std::string_view text) { return parseWhole<std::int64_t>(text); }

std::optional<std::uint64_t> parseUInt64(std::string_view text) {
    if (!text.empty() && text.front() == '-') return std::nullopt;
    return parseWhole<std::uint64_t>(text);
}

std::optional<double> parseReal(std::string_view text) { return parseWhole<double>(text); }

std::string formatReal(double value) { return formatAny(value); }
std::string formatReal(float value) { return formatAny(value); }

std::string countOf(long long count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace tarvex_cli
