#include "BenchPlugin.h"

#include <cstdio>
#include <cstdlib>

namespace tarvex_bench {

RhPlugin *benchPlugin() {
    static RhPlugin *loaded = [] {
        const char *named = std::getenv("TARVEX_PLUGIN");
        const char *path = named != nullptr ? named : TARVEX_PLUGIN_PATH;
        char error[512] = {};
        RhPlugin *plugin = rh_plugin_load(path, error, sizeof error);
        if (plugin == nullptr) {
            std::fprintf(stderr, "cannot load the plug-in %s: %s\n", path, error);
            std::exit(1);
        }
        rh_plugin_initialize(plugin, nullptr);
        return plugin;
    }();
    return loaded;
}

}  // namespace tarvex_bench
