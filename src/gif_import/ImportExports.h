#pragma once

#include "quorbel/QuorbelLibrary.h"

// The import workers behind the exported entry points. Each returns the code
// that the export hands to the kernel.
namespace GifImport {

int readFileMetadata(ZvLINK link);
int readFrameMetadata(ZvLINK link);
int readPalettes(ZvLINK link);
int readRasterBits(ZvLINK link);

int readGlobalPalette(mint argc, MArgument *args, MArgument result);
int readOneFrame(mint argc, MArgument *args, MArgument result);
int readAllFrames(mint argc, MArgument *args, MArgument result);

int clearCache(mint argc, MArgument *args, MArgument result);

// Destroys every cached decoder (un-initialisation).
void clearAllDecoders();

}  // namespace GifImport
