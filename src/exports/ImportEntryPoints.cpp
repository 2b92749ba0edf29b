#include "gif_import/ImportExports.h"
#include "quorbel/QuorbelLibrary.h"

extern "C" {

QUORBEL_EXPORT int ClearCache(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return GifImport::clearCache(argc, args, result);
}

QUORBEL_EXPORT int ReadFileMetadata(QuorbelLibraryData, ZvLINK link) {
    return GifImport::readFileMetadata(link);
}

QUORBEL_EXPORT int ReadFrameMetadata(QuorbelLibraryData, ZvLINK link) {
    return GifImport::readFrameMetadata(link);
}

QUORBEL_EXPORT int ReadPalettes(QuorbelLibraryData, ZvLINK link) {
    return GifImport::readPalettes(link);
}

QUORBEL_EXPORT int ReadRasterBits(QuorbelLibraryData, ZvLINK link) {
    return GifImport::readRasterBits(link);
}

QUORBEL_EXPORT int ReadGlobalPalette(QuorbelLibraryData, mint argc, MArgument *args,
                                     MArgument result) {
    return GifImport::readGlobalPalette(argc, args, result);
}

QUORBEL_EXPORT int ReadOneFrame(QuorbelLibraryData, mint argc, MArgument *args, MArgument result) {
    return GifImport::readOneFrame(argc, args, result);
}

QUORBEL_EXPORT int ReadAllFrames(QuorbelLibraryData, mint argc, MArgument *args,
                                 MArgument result) {
    return GifImport::readAllFrames(argc, args, result);
}

}  // extern "C"
