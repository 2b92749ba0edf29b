#pragma once

#include <stdexcept>

#include "exports/CatchClauses.h"

namespace OstrelUtils {

// DitherImage and UniqueColors tell a runtime error (-14) from anything else
// (-10), so that a failed allocation is not reported as a refused argument.
struct DitherCatchTable {
    static int code(std::exception_ptr failure) noexcept {
        return twoClauseCode<std::runtime_error>(failure, [](const std::runtime_error &) { return -14; }, -10);
    }
};

}  // namespace OstrelUtils
