#pragma once

#include "refhost/refhost.h"

namespace tarvex_cli {

// The tool makes and frees its own objects through the host's full table,
// whatever reduced table the plug-in was initialised with.
inline QuorbelLibraryData hostTable() { return rh_library_data(RH_TABLE_FULL); }

}  // namespace tarvex_cli
