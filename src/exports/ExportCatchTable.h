#pragma once

#include "exports/CatchClauses.h"
#include "gif_export/ExportError.h"

namespace GifExport {

// The writers return the status of an ExportError and -10 for anything else,
// a host-interface failure included.
struct ExportCatchTable {
    static int code(std::exception_ptr failure) noexcept {
        return OstrelUtils::twoClauseCode<ExportError>(failure, [](const ExportError &error) { return error.status(); },
                                                       -10);
    }
};

}  // namespace GifExport
