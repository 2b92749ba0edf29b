#include "LibraryVersions.h"

#include <gif_lib.h>
#include <jconfig.h>
#include <spng.h>

namespace tarvex_cli {

std::string libraryVersions() {
    constexpr long turbo = LIBJPEG_TURBO_VERSION_NUMBER;  // 2001005 for 2.1.5
    return "giflib " + std::to_string(GIFLIB_MAJOR) + "." + std::to_string(GIFLIB_MINOR) + "." +
           std::to_string(GIFLIB_RELEASE) + "\nlibspng " + spng_version_string() + "\nlibjpeg-turbo " +
           std::to_string(turbo / 1000000) + "." + std::to_string(turbo / 1000 % 1000) + "." +
           std::to_string(turbo % 1000) + "\n";
}

}  // namespace tarvex_cli
