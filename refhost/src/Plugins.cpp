// Loading, initialising and unloading plug-ins.

#include "Plugins.h"

#include <dlfcn.h>

#include <cstdio>

namespace refhost {

QuorbelLibraryData callTable(const RhPlugin *plugin) {
    return plugin->libData != nullptr ? plugin->libData : rh_library_data(RH_TABLE_FULL);
}

}  // namespace refhost

extern "C" {

RhPlugin *rh_plugin_load(const char *path, char *error, size_t errorSize) {
    void *library = path != nullptr ? dlopen(path, RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        const char *reason = path != nullptr ? dlerror() : "no path given";
        if (error != nullptr && errorSize > 0) std::snprintf(error, errorSize, "%s", reason);
        return nullptr;
    }
    return new RhPlugin{library, nullptr, false};
}

int rh_plugin_initialize(RhPlugin *plugin, QuorbelLibraryData libData) {
    if (plugin == nullptr) return -1000;
    auto initialize = reinterpret_cast<QuorbelInitializeFunction>(
        rh_plugin_symbol(plugin, "QuorbelLibrary_initialize"));
    if (initialize == nullptr) return -1000;
    plugin->libData = libData != nullptr ? libData : rh_library_data(RH_TABLE_FULL);
    const int code = initialize(plugin->libData);
    plugin->initialized = code == 0;
    return code;
}

void rh_plugin_uninitialize(RhPlugin *plugin) {
    if (plugin == nullptr || !plugin->initialized) return;
    auto uninitialize = reinterpret_cast<QuorbelUninitializeFunction>(
        rh_plugin_symbol(plugin, "QuorbelLibrary_uninitialize"));
    if (uninitialize != nullptr) uninitialize(plugin->libData);
    plugin->initialized = false;
    plugin->libData = nullptr;
}

void rh_plugin_unload(RhPlugin *plugin) {
    if (plugin == nullptr) return;
    rh_plugin_uninitialize(plugin);
    dlclose(plugin->library);
    delete plugin;
}

void *rh_plugin_symbol(RhPlugin *plugin, const char *name) {
    if (plugin == nullptr || name == nullptr) return nullptr;
    return dlsym(plugin->library, name);
}

}  // extern "C"
