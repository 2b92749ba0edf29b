#pragma once

#include <exception>
#include <stdexcept>

namespace OstrelUtils {

// DitherImage and UniqueColors tell a runtime error (-14) from anything else
// (-10), so that a failed allocation is not reported as a refused argument.
struct DitherCatchTable {
    static int code(std::exception_ptr failure) noexcept {
        try {
            std::rethrow_exception(failure);
        } catch (const std::runtime_error &) {
            return -14;
        } catch (...) {
            return -10;
        }
    }
};

}  // namespace OstrelUtils
