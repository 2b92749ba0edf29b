#pragma once

#include <string_view>

#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

inline constexpr std::string_view kListSeparator{QUORBEL_LIST_SEPARATOR};

}  // namespace OstrelUtils
