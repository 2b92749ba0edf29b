#pragma once

#include <exception>
#include <span>

#include "host/MArgumentManager.h"

namespace OstrelUtils {

// Runs a worker in the frame of an argument-vector export: the argument
// manager is built first (which fails before initialisation), the worker
// writes the result last, and any exception becomes the code that the
// export's catch table (beside the export) gives it, with the result slot
// left unwritten. Only the code reaches the kernel. `stringArguments` lists
// the positions of the export's string arguments, so that none is kept when
// the worker fails.
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
