// An installation has to work from any prefix: the installed tool must find
// its libraries and the plug-in relative to itself, never through the build tree.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "Scratch.h"
#include "ToolRun.h"

namespace {

using namespace tarvex_test;

TEST(Installation, RunsFromAPrefixItWasMovedTo) {
    const ScratchDirectory scratch;
    const std::string installed = scratch.path("installed"), moved = scratch.path("moved");
    const ProgramRun install =
        runProgram(TARVEX_CMAKE_COMMAND, {"--install", TARVEX_BUILD_DIR, "--prefix", installed});
    ASSERT_EQ(install.status, 0) << install.out << install.err;
    std::filesystem::rename(installed, moved);
    const std::string tool = moved + "/bin/tarvex";

    const ProgramRun version = runProgram(tool, {"--version"});
    EXPECT_EQ(version.status, 0) << version.err;
    EXPECT_EQ(version.out.rfind("tarvex ", 0), 0u) << version.out;

    const std::string sample = scratch.path("sample.gif");
    const ProgramRun made = runProgram(tool, {"sample-gif", sample});
    ASSERT_EQ(made.status, 0) << made.err;
    const ProgramRun info = runProgram(tool, {"info", sample});
    EXPECT_EQ(info.status, 0) << info.err;
    EXPECT_NE(info.out.find("5 frames"), std::string::npos) << info.out;
}

}  // namespace
