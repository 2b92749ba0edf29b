#pragma once

#include <optional>
#include <string>

#include "refhost/refhost.h"

namespace tarvex_cli {

// How plugin() brings the plug-in up. `tarvex call` changes it before the
// first use to reach a plug-in's paths for a missing or partial table.
struct PluginSetup {
    bool initialize = true;
    int table = RH_TABLE_FULL;
};
void setPluginSetup(const PluginSetup &setup);

// Where the plug-in is: the explicit path if any, else the environment's,
// else the first of the candidates beside the tool that exists. Throws
// CliError listing what was tried.
struct PluginSearch {
    std::optional<std::string> explicitPath;
    std::optional<std::string> environmentPath;
    std::string executableDirectory;
    std::string installLibraryDirectory;  // relative to the prefix, or absolute
};
std::string locatePlugin(const PluginSearch &search);

// Un-initialises and unloads the plug-in if it was loaded.
void unloadPlugin();

}  // namespace tarvex_cli
