// A minimal plug-in that exercises the host from the plug-in's side: it
// releases strings, creates objects, queries handles and answers over a link.

#include <cstring>
#include <string>

#include "quorbel/QuorbelLibrary.h"

namespace {
QuorbelLibraryData initializedWith = nullptr;
std::string echoed;
}  // namespace

extern "C" {

QUORBEL_EXPORT int QuorbelLibrary_initialize(QuorbelLibraryData libData) {
    initializedWith = libData;
    return 0;
}

QUORBEL_EXPORT void QuorbelLibrary_uninitialize(QuorbelLibraryData) { initializedWith = nullptr; }

// Whether the export was called with the table it was initialised with.
QUORBEL_EXPORT int SameTable(QuorbelLibraryData libData, mint, MArgument *, MArgument result) {
    MArgument_setBoolean(result, libData == initializedWith);
    return 0;
}

QUORBEL_EXPORT int EchoString(QuorbelLibraryData libData, mint argc, MArgument *args,
                              MArgument result) {
    if (argc < 1) return QUORBEL_FUNCTION_ERROR;
    char *text = MArgument_getUTF8String(args[0]);
    echoed = text;
    libData->releaseUTF8String(text);
    MArgument_setUTF8String(result, echoed.data());
    return 0;
}

QUORBEL_EXPORT int ReleaseTwice(QuorbelLibraryData libData, mint, MArgument *args, MArgument) {
    char *text = MArgument_getUTF8String(args[0]);
    libData->releaseUTF8String(text);
    libData->releaseUTF8String(text);
    return 0;
}

QUORBEL_EXPORT int Sum(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    if (argc < 2) return QUORBEL_FUNCTION_ERROR;
    MArgument_setInteger(result, MArgument_getInteger(args[0]) + MArgument_getInteger(args[1]));
    return 0;
}

// An RGB image of 4 x 3 pixels with as many channels as asked for.
QUORBEL_EXPORT int MakeImage(QuorbelLibraryData libData, mint, MArgument *args,
                             MArgument result) {
    MImage image = nullptr;
    const int code = libData->imageFunctions->new2D(4, 3, MArgument_getInteger(args[0]),
                                                    MImage_Type_Bit8, MImage_CS_RGB, 1, &image);
    if (code != 0) return code;
    MArgument_setMImage(result, image);
    return 0;
}

QUORBEL_EXPORT int ImageRows(QuorbelLibraryData libData, mint, MArgument *args,
                             MArgument result) {
    MArgument_setInteger(result, libData->imageFunctions->getRowCount(MArgument_getMImage(args[0])));
    return 0;
}

// Reads {name} and answers name -> a 2 x 3 byte array 0..5, in six writes.
QUORBEL_EXPORT int LinkProbe(QuorbelLibraryData, ZvLINK link) {
    int count = 0;
    const unsigned char *name = nullptr;
    int bytes = 0, characters = 0;
    if (!ZvTestHead(link, "List", &count) || count != 1) return QUORBEL_FUNCTION_ERROR;
    if (!ZvGetUTF8String(link, &name, &bytes, &characters)) return QUORBEL_FUNCTION_ERROR;
    const unsigned char data[] = {0, 1, 2, 3, 4, 5};
    const int dimensions[] = {2, 3};
    const bool written = ZvNewPacket(link) && ZvPutFunction(link, "Rule", 2) &&
                         ZvPutUTF8String(link, name, bytes) &&
                         ZvPutInteger8Array(link, data, dimensions, nullptr, 2) &&
                         ZvEndPacket(link) && ZvFlush(link);
    ZvReleaseUTF8String(link, name, bytes);
    return written ? 0 : -1;
}

// Claims success without answering.
QUORBEL_EXPORT int LinkSilent(QuorbelLibraryData, ZvLINK link) {
    int count = 0;
    return ZvTestHead(link, "List", &count) ? 0 : QUORBEL_FUNCTION_ERROR;
}

}  // extern "C"
