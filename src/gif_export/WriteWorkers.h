#pragma once

#include "host/MArgumentManager.h"

namespace GifExport {

inline constexpr mint kWriteFramesArgumentCount = 10;
inline constexpr mint kWriteColormapsArgumentCount = 11;

void writeFrames(OstrelUtils::MArgumentManager &arguments);
void writeColormaps(OstrelUtils::MArgumentManager &arguments);

}  // namespace GifExport
