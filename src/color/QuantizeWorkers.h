#pragma once

#include "host/MArgumentManager.h"

namespace Quant {

void imageQuantize(OstrelUtils::MArgumentManager &arguments);
void getQuantizedImage(OstrelUtils::MArgumentManager &arguments);
void uniqueColors(OstrelUtils::MArgumentManager &arguments);

}  // namespace Quant
