#pragma once

#include <exception>
#include <span>
#include <stdexcept>

#include "host/MArgumentManager.h"

namespace OstrelUtils {

// What an export returns for an exception escaping its worker. Only the code
// reaches the kernel; messages are dropped on purpose.
struct QuantizeCatchTable {
    static int code(std::exception_ptr) noexcept { return -14; }
};

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

// Runs a worker in the frame of an argument-vector export: the argument
// manager is built first (which fails before initialisation), the worker
// writes the result last, and any exception becomes the table's code with the
// result slot left unwritten. `stringArguments` lists the positions of the
// export's string arguments, so that none is kept when the worker fails.
template <typename CatchTable, typename Worker>
int runInCallFrame(mint argc, MArgument *args, MArgument result,
                   std::span<const unsigned> stringArguments, Worker &&worker) noexcept {
    try {
        MArgumentManager arguments(argc, args, result, stringArguments);
        worker(arguments);
        return 0;
    } catch (...) {
        return CatchTable::code(std::current_exception());
    }
}

}  // namespace OstrelUtils
