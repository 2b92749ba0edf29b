#pragma once

#include <exception>

namespace OstrelUtils {

// ImageQuantize and GetQuantizedImage return -14 for whatever escapes their
// worker. Only the code reaches the kernel; messages are dropped on purpose.
struct QuantizeCatchTable {
    static int code(std::exception_ptr) noexcept { return -14; }
};

}  // namespace OstrelUtils
