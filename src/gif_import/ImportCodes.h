#pragma once

#include "quorbel/QuorbelTypes.h"

namespace GifImport {

// What the import exports hand back to the kernel.
enum ImportCode : int {
    Success = 0,
    // No usable frame, a frame number out of range, or a failed link write.
    NoFrames = -1,
    CannotOpen = -2,
    Undecodable = -3,
    MalformedArguments = QUORBEL_FUNCTION_ERROR,
};

}  // namespace GifImport
