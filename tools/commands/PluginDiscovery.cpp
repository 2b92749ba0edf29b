#include "PluginDiscovery.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Command.h"

#ifndef TARVEX_INSTALL_LIBDIR
#define TARVEX_INSTALL_LIBDIR "lib"
#endif

namespace tarvex_cli {
namespace {

constexpr const char *kLibraryName = "libTarvex.so";

std::optional<std::string> g_explicitPath;
PluginSetup g_setup;
RhPlugin *g_plugin = nullptr;

std::string executableDirectory() {
    std::error_code error;
    std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string(".") : self.parent_path().string();
}

std::optional<std::string> environmentPath() {
    const char *value = std::getenv("TARVEX_PLUGIN");
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
}

std::vector<std::string> candidatesBeside(const PluginSearch &search) {
    namespace fs = std::filesystem;
    const fs::path here = search.executableDirectory;
    const fs::path libraryDirectory = fs::path(search.installLibraryDirectory).is_absolute()
                                          ? fs::path(search.installLibraryDirectory)
                                          : here / ".." / search.installLibraryDirectory;
    return {(here / ".." / "src" / kLibraryName).lexically_normal().string(),
            (libraryDirectory / kLibraryName).lexically_normal().string()};
}

RhPlugin *loadAndInitialize(const std::string &path) {
    char error[1024] = {};
    RhPlugin *loaded = rh_plugin_load(path.c_str(), error, sizeof error);
    if (loaded == nullptr) throw CliError("cannot load the plug-in " + path + ": " + error);
    if (rh_plugin_symbol(loaded, "QuorbelLibrary_initialize") == nullptr ||
        rh_plugin_symbol(loaded, "StringSeparator") == nullptr) {
        rh_plugin_unload(loaded);
        throw CliError(path + " is not a Tarvex plug-in: it lacks the plug-in's entry points");
    }
    if (!g_setup.initialize) return loaded;
    QuorbelLibraryData table = g_setup.table == RH_TABLE_FULL ? nullptr : rh_library_data(g_setup.table);
    if (int code = rh_plugin_initialize(loaded, table); code != 0) {
        rh_plugin_unload(loaded);
        throw CliError("the plug-in's initialisation returned " + std::to_string(code));
    }
    return loaded;
}

}  // namespace

std::string locatePlugin(const PluginSearch &search) {
    if (search.explicitPath) return *search.explicitPath;
    if (search.environmentPath) return *search.environmentPath;
    std::string tried;
    for (const std::string &candidate : candidatesBeside(search)) {
        std::error_code error;
        if (std::filesystem::exists(candidate, error)) return candidate;
        tried += (tried.empty() ? "" : ", ") + candidate;
    }
    throw CliError("cannot find the plug-in (looked for " + tried +
                   "); give --plugin PATH or set TARVEX_PLUGIN");
}

void setPluginPath(const std::string &path) { g_explicitPath = path; }

void setPluginSetup(const PluginSetup &setup) { g_setup = setup; }

RhPlugin *plugin() {
    if (g_plugin == nullptr) {
        g_plugin = loadAndInitialize(
            locatePlugin({g_explicitPath, environmentPath(), executableDirectory(), TARVEX_INSTALL_LIBDIR}));
    }
    return g_plugin;
}

void unloadPlugin() {
    if (g_plugin != nullptr) rh_plugin_unload(g_plugin);
    g_plugin = nullptr;
}

}  // namespace tarvex_cli
