#pragma once

#include <string>

#include "gif_import/HostString.h"
#include "gif_import/ImportCodes.h"
#include "host/LibraryData.h"

namespace GifImport {

// The common course of the argument-vector readers, whose first argument is
// the file name. The name is given back to the kernel whatever the outcome,
// and a failure thrown while reading (bad_alloc above all) ends in NoFrames
// rather than escaping into the kernel.
template <typename Read>
int readNamedFile(mint argc, MArgument *args, mint argumentsNeeded, Read read) {
    QuorbelLibraryData library = OstrelUtils::libraryData();
    if (library == nullptr || argc < 1) return MalformedArguments;
    HostString fileName(library, args[0]);
    if (argc < argumentsNeeded) return MalformedArguments;
    try {
        return read(library, fileName.bytes());
    } catch (...) {
        return NoFrames;
    }
}

}  // namespace GifImport
