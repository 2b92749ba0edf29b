#include "host/LibraryData.h"
