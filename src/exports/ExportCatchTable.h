#pragma once

#include <exception>

#include "gif_export/ExportError.h"

namespace GifExport {

// The writers return the status of an ExportError and -10 for anything else,
// a host-interface failure included.
struct ExportCatchTable {
    static int code(std::exception_ptr failure) noexcept {
        try {
            std::rethrow_exception(failure);
        } catch (const ExportError &error) {
            return error.status();
        } catch (...) {
            return -10;
        }
    }
};

}  // namespace GifExport
