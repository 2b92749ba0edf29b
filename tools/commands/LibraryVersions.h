#pragma once

#include <string>

namespace tarvex_cli {

// The versions of the libraries that read and write files, one "name
// version" line each: giflib and libjpeg-turbo as built against, libspng as
// it runs.
std::string libraryVersions();

}  // namespace tarvex_cli
