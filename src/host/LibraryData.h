#pragma once

#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

// The kernel's callback table, as handed to QuorbelLibrary_initialize; null
// before initialisation.
QuorbelLibraryData libraryData();

// Stores the table and gives every host-array instantiation its copies.
void setLibraryData(QuorbelLibraryData data);

}  // namespace OstrelUtils
