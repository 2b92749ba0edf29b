#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvex_cli {

// Whole-token conversions: nothing may follow the number.
std::optional<std::int64_t> parseInt64(std::string_view text);
std::optional<std::uint64_t> parseUInt64(std::string_view text);
std::optional<double> parseReal(std::string_view text);

// Reals in the shortest text that reads back to the same value, with a
// trailing dot when that text would otherwise look like an integer (1., 0.5,
// 1e-10); the non-finite values get the kernel's names.
std::string formatReal(double value);
std::string formatReal(float value);

// "1 channel", "3 channels".
std::string countOf(long long count, std::string_view noun);

}  // namespace tarvex_cli
