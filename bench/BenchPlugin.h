#pragma once

#include "refhost/refhost.h"

namespace tarvex_bench {

// The plug-in under measurement, loaded and initialised on first use: the one
// named by TARVEX_PLUGIN, else the one this build made. Exits when it cannot
// be loaded.
RhPlugin *benchPlugin();

}  // namespace tarvex_bench
