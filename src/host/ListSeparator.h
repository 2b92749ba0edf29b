#pragma once

#include <string_view>

namespace OstrelUtils {

// Joins several strings into one argument (STX, three BEL, ETX): bytes that
// never occur in text a user types.
inline constexpr std::string_view kListSeparator{"\x02\x07\x07\x07\x03", 5};

}  // namespace OstrelUtils
