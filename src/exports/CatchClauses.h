#pragma once

#include <exception>

namespace OstrelUtils {

// The two clauses of a catch table: an exception of type `First` becomes
// firstCode(it), anything else `otherCode`. Only the code reaches the
// kernel; messages are dropped on purpose.
template <class First, class FirstCode>
int twoClauseCode(std::exception_ptr failure, FirstCode firstCode, int otherCode) noexcept {
    try {
        std::rethrow_exception(failure);
    } catch (const First &error) {
        return firstCode(error);
    } catch (...) {
        return otherCode;
    }
}

}  // namespace OstrelUtils
