#pragma once

#include <string>

#include "gif_export/Encoder.h"
#include "host/RawArray.h"
#include "host/TensorView.h"

// The checks of the export arguments shared by both writers; each throws a
// std::runtime_error naming what is wrong, and otherwise fills the encoder.
namespace GifExport {

inline constexpr std::uint32_t kMaxLoopCount = 65535;

void setDurations(Encoder &encoder, const OstrelUtils::TensorView &seconds);
void setDitherMethod(Encoder &encoder, const std::string &method);
void setLoopCount(Encoder &encoder, mint loops);
void setBackground(Encoder &encoder, const OstrelUtils::TensorView &color);
void setTransparency(Encoder &encoder, const OstrelUtils::TensorView &colors);
void setDisposals(Encoder &encoder, const OstrelUtils::TensorView &modes);
// The caller's colour maps: one for all frames, or one per frame.
void setColorMaps(Encoder &encoder, const OstrelUtils::RawArray<unsigned char> &maps);

// Hundredths of a second, halves away from zero, wrapped to 32 bits as the
// file keeps only the low 16 anyway.
int hundredthsOf(double seconds);

}  // namespace GifExport
