#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gif_lib.h>

namespace GifImport {

// Picks the loop count and the comments out of a run of giflib extension
// blocks (those before one image, or those after the last).
void scanExtensions(const ExtensionBlock *blocks, int blockCount, std::int32_t &loopCount,
                    std::vector<std::string> &comments);

}  // namespace GifImport
