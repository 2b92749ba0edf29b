#pragma once

#include "host/MArgumentManager.h"

namespace ColorUtilities {

// The worker of the DitherImage export.
void ditherImage(OstrelUtils::MArgumentManager &arguments);

}  // namespace ColorUtilities
