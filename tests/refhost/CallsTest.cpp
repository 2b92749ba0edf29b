// The plug-in's own tests drive calls, books and faults through the real
// plug-in; what stays here is what a well-behaved plug-in never does.

#include <string>

#include <gtest/gtest.h>

#include "refhost/refhost.hpp"

namespace {

class Calls : public testing::Test {
protected:
    static void SetUpTestSuite() {
        char error[512] = {};
        probe = rh_plugin_load(REFHOST_PROBE_PATH, error, sizeof error);
        ASSERT_NE(probe, nullptr) << error;
        ASSERT_EQ(rh_plugin_initialize(probe, nullptr), 0);
    }
    static void TearDownTestSuite() { rh_plugin_unload(probe); }

    static std::string callLink(const char *name, const char *arguments) {
        RhExpr *answer = nullptr;
        EXPECT_EQ(rh_call_link(probe, name, rh::parse(arguments).get(), &answer), 0);
        const rh::Expr owned(answer);
        return rh::format(answer);
    }

    static RhPlugin *probe;
};

RhPlugin *Calls::probe = nullptr;

TEST_F(Calls, ExportsGetTheTableTheyWereInitialisedWithAndOnlyWellFormedCalls) {
    rh_plugin_uninitialize(probe);
    ASSERT_EQ(rh_plugin_initialize(probe, rh_library_data(RH_TABLE_WITHOUT_IMAGES)), 0);
    RhValue same{RH_BOOLEAN, {}, 0};
    ASSERT_EQ(rh_call(probe, "SameTable", 0, nullptr, &same), 0);
    EXPECT_TRUE(same.written && same.value.boolean);
    rh_plugin_uninitialize(probe);
    ASSERT_EQ(rh_plugin_initialize(probe, nullptr), 0);

    // SameTable would answer 0 had it been called.
    EXPECT_EQ(rh_call(probe, "SameTable", -1, nullptr, &same), QUORBEL_FUNCTION_ERROR);
    EXPECT_EQ(rh_call(probe, "SameTable", 1, nullptr, &same), QUORBEL_FUNCTION_ERROR);
    EXPECT_EQ(rh_call(probe, "NoSuchExport", 0, nullptr, &same), -1000);
}

TEST_F(Calls, AStringReleasedTwiceIsCountedOnce) {
    const RhCounters before = rh_counters();
    const RhValue name{RH_STRING, {.string = "frame.gif"}, 0};
    ASSERT_EQ(rh_call(probe, "ReleaseTwice", 1, &name, nullptr), 0);
    const RhCounters after = rh_counters();
    EXPECT_EQ(after.stringsIssued - before.stringsIssued, 1);
    EXPECT_EQ(after.stringsReleased - before.stringsReleased, 1);
    EXPECT_EQ(after.badReleases - before.badReleases, 1);
    EXPECT_EQ(rh_strings_outstanding(), 0);
}

TEST_F(Calls, ALinkExportThatClaimsSuccessWithoutAnAnswerGetsNone) {
    EXPECT_EQ(callLink("LinkSilent", "{}"), "");
    EXPECT_NE(std::string(rh_link_answer_problem()), "");
    EXPECT_EQ(callLink("LinkSilent", R"({"unread"})"), "");
}

}  // namespace
