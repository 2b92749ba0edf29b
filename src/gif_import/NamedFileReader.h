#pragma once

#include <string>

#include "gif_import/ImportCodes.h"
#include "host/LibraryData.h"
#include "host/MArgumentManager.h"

namespace GifImport {

// The common course of the argument-vector readers, whose first argument is
// the file name. The argument manager gives the name back to the kernel
// whatever the outcome, and a failure thrown while reading (bad_alloc above
// all) ends in NoFrames rather than escaping into the kernel.
template <typename Read>
int readNamedFile(mint argc, MArgument *args, MArgument result, mint argumentsNeeded, Read read) {
    if (OstrelUtils::libraryData() == nullptr || argc < 1) return MalformedArguments;
    static constexpr unsigned kFileName[] = {0};
    try {
        OstrelUtils::MArgumentManager arguments(argc, args, result, kFileName);
        if (argc < argumentsNeeded) return MalformedArguments;
        return read(arguments, arguments.getString(0));
    } catch (...) {
        return NoFrames;
    }
}

}  // namespace GifImport
