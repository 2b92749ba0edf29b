// The option reader that every command reads its command line with.
#include <utility>

#include <gtest/gtest.h>

#include "Options.h"
#include "Support.h"

using namespace tarvex_cli;

namespace {

const std::vector<OptionRule> kRules{
    {"--output", "-o", true}, {"--frame", {}, true}, {"--quiet", "-q"}, {"--comment", {}, true, true}};

ParsedOptions read(const std::vector<std::string> &words) { return readOptions("cmd", words, kRules); }

}  // namespace

TEST(Options, ValuesFollowAsTheNextWordOrAfterEquals) {
    const ParsedOptions parsed = read({"in.png", "--output=out.png", "--frame", "3", "-q", "--comment", "a",
                                       "--comment=b", "-", "-12", "--", "--frame"});
    EXPECT_EQ(parsed.value("--output"), "out.png");
    EXPECT_EQ(parsed.value("--frame"), "3");
    EXPECT_TRUE(parsed.has("--quiet"));
    EXPECT_EQ(parsed.values("--comment"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(parsed.operands(), (std::vector<std::string>{"in.png", "-", "-12", "--frame"}));
    EXPECT_EQ(readOptions("cmd", {"--output="}, kRules).value("--output"), "");
    EXPECT_EQ(read({"-oout.png"}).value("--output"), "out.png");
    EXPECT_FALSE(read({"x"}).has("--output"));
}

TEST(Options, BeforeOperandsStopsAtTheFirstOperand) {
    const ParsedOptions parsed =
        readOptions("", {"-q", "call", "--frame", "2"}, kRules, OptionPlacement::BeforeOperands);
    EXPECT_TRUE(parsed.has("--quiet"));
    EXPECT_FALSE(parsed.has("--frame"));
    EXPECT_EQ(parsed.operands(), (std::vector<std::string>{"call", "--frame", "2"}));
}

TEST(Options, RefusalsNameTheCommandAndTheOption) {
    const std::pair<std::vector<std::string>, const char *> cases[] = {
        {{"--json"}, "cmd: unknown option --json"},
        {{"--json=1"}, "cmd: unknown option --json"},
        {{"-x"}, "cmd: unknown option -x"},
        {{"-qx"}, "cmd: unknown option -qx"},
        {{"-oa", "-ob"}, "cmd: --output is given more than once"},
        {{"--frame", "1", "--frame", "2"}, "cmd: --frame is given more than once"},
        {{"-o", "a", "--output=b"}, "cmd: --output is given more than once"},
        {{"--frame"}, "cmd: --frame needs a value"},
        {{"--quiet=yes"}, "cmd: --quiet takes no value"},
    };
    for (const auto &[words, message] : cases) EXPECT_EQ(cliFailure([&] { read(words); }, 2), message);
}

TEST(Options, NumbersMustBeWholeWords) {
    EXPECT_EQ(wholeNumberOption("cmd", "--frame", "+7", 1, 9), 7);
    EXPECT_EQ(realOption("cmd", "--delay", "0.25"), 0.25);
    // What a lenient conversion would take: a prefix, spaces, an empty word.
    for (const char *text : {"3x", " 3", "", "0x10", "1e3", "0", "10"})
        EXPECT_EQ(cliFailure([&] { wholeNumberOption("cmd", "--frame", text, 1, 9); }, 2),
                  "cmd: --frame needs a whole number from 1 to 9, not '" + std::string(text) + "'");
    for (const char *text : {"1s", "inf", "nan", ""})
        EXPECT_NE(cliFailure([&] { realOption("cmd", "--delay", text); }, 2).find("--delay needs a number"),
                  std::string::npos);
}

TEST(Options, ChoicesListTheWordsTheyTake) {
    const std::vector<Choice<int>> choices{{"none", 0}, {"floyd-steinberg", 1}, {"FloydSteinberg", 1}};
    EXPECT_EQ(choiceOption("cmd", "--method", "FloydSteinberg", choices), 1);
    EXPECT_EQ(cliFailure([&] { choiceOption("cmd", "--method", "fs", choices); }, 2),
              "cmd: --method is none, floyd-steinberg or FloydSteinberg, not 'fs'");
}
