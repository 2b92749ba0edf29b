#include "Plugin.h"

#include <cstdlib>

#include "refhost/refhost.hpp"

namespace tarvex_test {

RhPlugin *plugin() {
    static RhPlugin *loaded = [] {
        char error[512] = {};
        RhPlugin *p = rh_plugin_load(TARVEX_PLUGIN_PATH, error, sizeof error);
        if (p == nullptr) {
            ADD_FAILURE() << "cannot load the plug-in: " << error;
            std::abort();
        }
        rh_plugin_initialize(p, nullptr);
        return p;
    }();
    return loaded;
}

HostBooksGuard::HostBooksGuard() : before_(rh_counters()) {}

HostBooksGuard::~HostBooksGuard() {
    const RhCounters after = rh_counters();
    EXPECT_EQ(after.liveImages, before_.liveImages) << "images left alive";
    EXPECT_EQ(after.liveRawArrays, before_.liveRawArrays) << "raw arrays left alive";
    EXPECT_EQ(after.liveTensors, before_.liveTensors) << "tensors left alive";
    EXPECT_EQ(after.stringsReleased - before_.stringsReleased,
              after.stringsIssued - before_.stringsIssued)
        << "argument strings not given back";
    EXPECT_EQ(after.badReleases, before_.badReleases) << "strings released twice or unknown";
    EXPECT_EQ(after.badHandles, before_.badHandles) << "unknown handles used";
    EXPECT_EQ(after.messages, before_.messages) << "messages posted";
}

std::string callLink(const char *name, const char *arguments, int *code) {
    RhExpr *answer = nullptr;
    *code = rh_call_link(plugin(), name, rh::parse(arguments).get(), &answer);
    return rh::format(rh::Expr(answer).get());
}

}  // namespace tarvex_test
