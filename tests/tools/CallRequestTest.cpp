// The command line of `tarvex call`.

#include <utility>

#include <gtest/gtest.h>

#include "CallRequest.h"
#include "Support.h"

using namespace tarvex_cli;

namespace {

std::string usageProblem(const std::vector<std::string> &words) {
    return cliFailure([&] { parseCallRequest(words); }, 2);
}

}  // namespace

TEST(CallRequest, OptionsMayStandAnywhereUntilDoubleDash) {
    CallRequest request =
        parseCallRequest({"--books", "ImageQuantize", "png:a.png", "--argc=2", "--table", "no-images", "--", "--out"});
    EXPECT_EQ(request.exportName, "ImageQuantize");
    EXPECT_EQ(request.arguments, (std::vector<std::string>{"png:a.png", "--out"}));
    EXPECT_EQ(request.result, RH_RAW_ARRAY);
    EXPECT_EQ(request.argc, 2);
    EXPECT_EQ(request.table, RH_TABLE_WITHOUT_IMAGES);
    EXPECT_TRUE(request.books);
    EXPECT_TRUE(request.initialize);
}

TEST(CallRequest, TheExportOrTheOptionsSayHowToCall) {
    EXPECT_EQ(parseCallRequest({"StringSeparator"}).result, RH_STRING);
    EXPECT_EQ(parseCallRequest({"ReadGlobalPalette", "str:a.gif"}).result, RH_TENSOR);
    EXPECT_EQ(parseCallRequest({"UniqueColors", "--result", "real"}).result, RH_REAL);
    EXPECT_EQ(parseCallRequest({"SomethingNew", "--result=none"}).result, RH_NONE);
    const CallRequest link = parseCallRequest({"ReadPalettes", "{\"a.gif\"}", "--no-init"});
    EXPECT_TRUE(link.linkExport);
    EXPECT_FALSE(link.initialize);
}

TEST(CallRequest, MalformedCommandLines) {
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{}, "name of an export"},
        {{"--books"}, "name of an export"},
        {{"ClearCache", "--argc"}, "--argc needs a value"},
        {{"ClearCache", "--argc", "-1"}, "at least 0"},
        {{"ClearCache", "--table", "none"}, "no-raw-arrays"},
        {{"ClearCache", "--no-init", "--table=no-images"}, "exclude"},
        {{"ClearCache", "--books=yes"}, "takes no value"},
        {{"ClearCache", "--verbose"}, "unknown option --verbose"},
        {{"UniqueColors", "--out", "n.txt"}, "--out saves"},
        {{"SomethingNew"}, "--result KIND"},
        {{"UniqueColors", "--result", "matrix"}, "'matrix'"},
        {{"ReadPalettes"}, "one expression"},
        {{"ReadPalettes", "a.gif", "b.gif"}, "one expression"},
        {{"ReadRasterBits", "a.gif", "--argc", "0"}, "do not apply"},
    };
    for (const auto &[words, problem] : cases)
        EXPECT_NE(usageProblem(words).find(problem), std::string::npos) << problem;
}
