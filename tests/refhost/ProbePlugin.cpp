// A plug-in that misbehaves on purpose, to reach what the host must withstand.

#include "quorbel/QuorbelLibrary.h"

namespace {
QuorbelLibraryData initializedWith = nullptr;
}  // namespace

extern "C" {

QUORBEL_EXPORT int QuorbelLibrary_initialize(QuorbelLibraryData libData) {
    initializedWith = libData;
    return 0;
}

QUORBEL_EXPORT void QuorbelLibrary_uninitialize(QuorbelLibraryData) { initializedWith = nullptr; }

QUORBEL_EXPORT int SameTable(QuorbelLibraryData libData, mint, MArgument *, MArgument result) {
    MArgument_setBoolean(result, libData == initializedWith);
    return 0;
}

QUORBEL_EXPORT int ReleaseTwice(QuorbelLibraryData libData, mint, MArgument *args, MArgument) {
    char *text = MArgument_getUTF8String(args[0]);
    libData->releaseUTF8String(text);
    libData->releaseUTF8String(text);
    return 0;
}

// Claims success without answering.
QUORBEL_EXPORT int LinkSilent(QuorbelLibraryData, ZvLINK link) {
    int count = 0;
    return ZvTestHead(link, "List", &count) ? 0 : QUORBEL_FUNCTION_ERROR;
}

}  // extern "C"
