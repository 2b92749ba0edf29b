#pragma once

#include <string>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

// Host objects in the kernel's input form:
//   RawArray["UnsignedInteger8", {{255, 0, 0}, {0, 0, 255}}]
//   Tensor["Integer", {1, 2, 3}]
//   Image[{width, height}, "Byte", Slices -> 2, Channels -> 3, ColorSpace -> "RGB",
//         Interleaved -> True, Alpha -> False]   (Slices only for 3-D images)
// The summaries give the dimensions in place of the elements:
//   RawArray["UnsignedInteger8", Dimensions -> {2, 3}]
std::string formatRawArray(MRawArray array);
std::string summarizeRawArray(MRawArray array);
std::string formatTensor(MTensor tensor);
std::string summarizeTensor(MTensor tensor);
std::string summarizeImage(MImage image);

std::vector<mint> rawArrayDimensions(MRawArray array);
std::vector<mint> tensorDimensions(MTensor tensor);

}  // namespace tarvex_cli
