// The command line of `tarvex call`.

#include <gtest/gtest.h>

#include "CallRequest.h"
#include "Command.h"

using namespace tarvex_cli;

namespace {

std::string usageProblem(const std::vector<std::string> &words) {
    try {
        parseCallRequest(words);
    } catch (const CliError &error) {
        EXPECT_EQ(error.exitStatus, 2);
        return error.what();
    }
    ADD_FAILURE() << "accepted";
    return {};
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

TEST(CallRequest, ResultKindsComeFromTheExportOrTheOption) {
    EXPECT_EQ(parseCallRequest({"StringSeparator"}).result, RH_STRING);
    EXPECT_EQ(parseCallRequest({"ReadGlobalPalette", "str:a.gif"}).result, RH_TENSOR);
    EXPECT_EQ(parseCallRequest({"UniqueColors", "--result", "real"}).result, RH_REAL);
    EXPECT_EQ(parseCallRequest({"SomethingNew", "--result=none"}).result, RH_NONE);
    EXPECT_NE(usageProblem({"SomethingNew"}).find("--result KIND"), std::string::npos);
    EXPECT_NE(usageProblem({"UniqueColors", "--result", "matrix"}).find("'matrix'"), std::string::npos);
}

TEST(CallRequest, LinkExportsTakeOneExpressionAndNoVectorOptions) {
    CallRequest link = parseCallRequest({"ReadPalettes", "{\"a.gif\"}", "--no-init"});
    EXPECT_TRUE(link.linkExport);
    EXPECT_FALSE(link.initialize);
    EXPECT_NE(usageProblem({"ReadPalettes"}).find("one expression"), std::string::npos);
    EXPECT_NE(usageProblem({"ReadPalettes", "a.gif", "b.gif"}).find("one expression"), std::string::npos);
    EXPECT_NE(usageProblem({"ReadRasterBits", "a.gif", "--argc", "0"}).find("do not apply"), std::string::npos);
}

TEST(CallRequest, MalformedCommandLines) {
    EXPECT_NE(usageProblem({}).find("name of an export"), std::string::npos);
    EXPECT_NE(usageProblem({"--books"}).find("name of an export"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--argc"}).find("--argc needs a value"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--argc", "-1"}).find("at least 0"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--table", "none"}).find("no-raw-arrays"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--no-init", "--table=no-images"}).find("exclude"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--books=yes"}).find("takes no value"), std::string::npos);
    EXPECT_NE(usageProblem({"ClearCache", "--verbose"}).find("unknown option '--verbose'"), std::string::npos);
    EXPECT_NE(usageProblem({"UniqueColors", "--out", "n.txt"}).find("--out saves"), std::string::npos);
}
