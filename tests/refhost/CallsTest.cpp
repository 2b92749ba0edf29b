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
    void TearDown() override { rh_clear_faults(); }

    static RhValue string(const char *text) {
        RhValue value{};
        value.kind = RH_STRING;
        value.value.string = text;
        return value;
    }
    static RhValue integer(mint number) {
        RhValue value{};
        value.kind = RH_INTEGER;
        value.value.integer = number;
        return value;
    }
    static RhValue resultOf(RhKind kind) {
        RhValue value{};
        value.kind = kind;
        return value;
    }

    static std::string callLink(const char *name, const char *arguments, int expectedCode) {
        RhExpr *answer = nullptr;
        EXPECT_EQ(rh_call_link(probe, name, rh::parse(arguments).get(), &answer), expectedCode);
        const rh::Expr owned(answer);
        return rh::format(answer);
    }

    static RhPlugin *probe;
};

RhPlugin *Calls::probe = nullptr;

TEST_F(Calls, ScalarsReachTheExportAndTheResultIsReadBack) {
    const RhValue args[] = {integer(40), integer(2)};
    RhValue result = resultOf(RH_INTEGER);
    EXPECT_EQ(rh_call(probe, "Sum", 2, args, &result), 0);
    EXPECT_TRUE(result.written);
    EXPECT_EQ(result.value.integer, 42);

    EXPECT_EQ(rh_call(probe, "Sum", 1, args, &result), QUORBEL_FUNCTION_ERROR);
    EXPECT_FALSE(result.written);
    EXPECT_EQ(rh_call(probe, "NoSuchExport", 0, nullptr, &result), -1000);
}

TEST_F(Calls, ArgumentStringsAreIssuedAndGivenBackOnce) {
    const RhCounters before = rh_counters();
    const RhValue name = string("frame.gif");
    RhValue result = resultOf(RH_STRING);
    ASSERT_EQ(rh_call(probe, "EchoString", 1, &name, &result), 0);
    EXPECT_STREQ(result.value.string, "frame.gif");
    EXPECT_NE(result.value.string, name.value.string);

    ASSERT_EQ(rh_call(probe, "ReleaseTwice", 1, &name, nullptr), 0);
    const RhCounters after = rh_counters();
    EXPECT_EQ(after.stringsIssued - before.stringsIssued, 2);
    EXPECT_EQ(after.stringsReleased - before.stringsReleased, 2);
    EXPECT_EQ(after.badReleases - before.badReleases, 1);
    EXPECT_EQ(rh_strings_outstanding(), 0);
}

TEST_F(Calls, ExportsGetTheTableTheyWereInitialisedWith) {
    RhValue same = resultOf(RH_BOOLEAN);
    rh_plugin_uninitialize(probe);
    ASSERT_EQ(rh_plugin_initialize(probe, rh_library_data(RH_TABLE_WITHOUT_IMAGES)), 0);
    ASSERT_EQ(rh_call(probe, "SameTable", 0, nullptr, &same), 0);
    EXPECT_TRUE(same.value.boolean);
    rh_plugin_uninitialize(probe);
    ASSERT_EQ(rh_plugin_initialize(probe, nullptr), 0);
}

TEST_F(Calls, CreationFaultsReachThePlugin) {
    const RhValue channels = integer(4);
    RhValue result = resultOf(RH_IMAGE);
    rh_fail_next_image_creation(QUORBEL_MEMORY_ERROR);
    EXPECT_EQ(rh_call(probe, "MakeImage", 1, &channels, &result), QUORBEL_MEMORY_ERROR);
    EXPECT_FALSE(result.written);

    ASSERT_EQ(rh_call(probe, "MakeImage", 1, &channels, &result), 0);
    const rh::Image image(result.value.image);
    EXPECT_TRUE(rh_image_is_live(image.get()));
    EXPECT_TRUE(rh_library_data(RH_TABLE_FULL)->imageFunctions->alphaChannelQ(image.get()));
}

TEST_F(Calls, AnArgumentOfTheWrongKindIsCountedNotFollowed) {
    MRawArray array = nullptr;
    const mint dimensions[] = {2, 2};
    ASSERT_EQ(rh_library_data(RH_TABLE_FULL)
                  ->rawArrayFunctions->create(MRawArray_Type_UBit8, 2, dimensions, &array),
              0);
    const rh::RawArray owned(array);
    RhValue argument{};
    argument.kind = RH_RAW_ARRAY;
    argument.value.rawArray = array;
    RhValue rows = resultOf(RH_INTEGER);
    const long before = rh_counters().badHandles;
    ASSERT_EQ(rh_call(probe, "ImageRows", 1, &argument, &rows), 0);
    EXPECT_EQ(rows.value.integer, 0);
    EXPECT_EQ(rh_counters().badHandles, before + 1);
}

TEST_F(Calls, ALinkCallAnswersWithOneExpression) {
    EXPECT_EQ(callLink("LinkProbe", R"({"f.gif"})", 0), R"("f.gif" -> {{0, 1, 2}, {3, 4, 5}})");
    EXPECT_EQ(callLink("LinkProbe", R"({"a", "b"})", QUORBEL_FUNCTION_ERROR), "");
}

TEST_F(Calls, EveryLinkWriteCanBeMadeToFail) {
    // LinkProbe makes six writes.
    for (int allowed = 0; allowed < 6; ++allowed) {
        rh_fail_link_after(allowed);
        EXPECT_EQ(callLink("LinkProbe", R"({"f.gif"})", -1), "") << allowed;
    }
    rh_fail_link_after(6);
    EXPECT_NE(callLink("LinkProbe", R"({"f.gif"})", 0), "");
}

TEST_F(Calls, ALinkExportThatClaimsSuccessWithoutAnAnswerGetsNone) {
    EXPECT_EQ(callLink("LinkSilent", "{}", 0), "");
    EXPECT_NE(std::string(rh_link_answer_problem()), "");
    EXPECT_EQ(callLink("LinkSilent", R"({"unread"})", 0), "");
}

}  // namespace
