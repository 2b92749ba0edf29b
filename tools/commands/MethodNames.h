#pragma once

#include <string>
#include <vector>

#include "Options.h"

namespace tarvex_cli {

// Dithering methods by the tool's names and by the plug-in's own, which
// users of the kernel know.
inline const std::vector<Choice<std::string>> kDitherMethods{
    {"none", "None"}, {"floyd-steinberg", "FloydSteinberg"}, {"None", "None"}, {"FloydSteinberg", "FloydSteinberg"}};

// Quantization methods and their numbers in the plug-in.
inline const std::vector<Choice<long>> kQuantizeMethods{{"median-cut", 1}, {"wu", 2},         {"octree", 3},
                                                        {"MedianCut", 1},  {"Wu", 2},         {"Octree", 3},
                                                        {"1", 1},          {"2", 2},          {"3", 3}};

}  // namespace tarvex_cli
