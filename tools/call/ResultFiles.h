#pragma once

#include <string>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

// Saving results for --out. Each returns one line per file written, telling
// how to pass the file back to `tarvex call`.
//
// Images go to PNG when they are 8-bit or 16-bit with 1 to 4 interleaved
// channels (a 3-D image as one PNG per slice, FILE-1.png, FILE-2.png, ...),
// otherwise, or when FILE ends in .raw, to a raw sample file. Raw arrays and
// tensors go to files of native-order elements.
std::vector<std::string> saveImage(MImage image, const std::string &path);
std::string saveRawArray(MRawArray array, const std::string &path);
std::string saveTensor(MTensor tensor, const std::string &path);

// "frames.png", 2 -> "frames-2.png"; "frames" -> "frames-2".
std::string numberedPath(const std::string &path, mint number);

}  // namespace tarvex_cli
