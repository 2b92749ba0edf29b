// A loaded plug-in and the table it was initialised with.
#pragma once

#include "refhost/refhost.h"

struct RhPlugin {
    void *library = nullptr;
    QuorbelLibraryData libData = nullptr;
    bool initialized = false;
};

namespace refhost {

// The table an export is called with: the initialising one, else the full one.
QuorbelLibraryData callTable(const RhPlugin *plugin);

}  // namespace refhost
