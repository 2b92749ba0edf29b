#include "UninitialisedPlugin.h"

#include <filesystem>

namespace tarvex_test {

void UninitialisedPluginTest::SetUp() {
    const std::string copy = scratch_.path("libTarvex-copy.so");
    std::filesystem::copy_file(TARVEX_PLUGIN_PATH, copy);
    char error[512] = {};
    uninitialised_ = rh_plugin_load(copy.c_str(), error, sizeof error);
    ASSERT_NE(uninitialised_, nullptr) << error;
}

void UninitialisedPluginTest::TearDown() {
    if (uninitialised_ != nullptr) rh_plugin_unload(uninitialised_);
}

}  // namespace tarvex_test
