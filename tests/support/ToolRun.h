// Running a program as a user would, without a shell in between: arguments
// reach it exactly as given.
#pragma once

#include <string>
#include <vector>

namespace tarvex_test {

struct ProgramRun {
    int status;  // the exit status, or -1 when the program did not exit normally
    std::string out;
    std::string err;
    bool started = true;  // false when there is no such program to run
};

// Runs `program` (a path, or a name looked up on PATH) with `args`, standard
// input read from `input`; both outputs go through files, so neither can
// block however much the program writes. A crash is a test failure; a
// program that cannot be started is not, so that callers can skip.
ProgramRun runProgram(const std::string &program, const std::vector<std::string> &args,
                      const std::string &input = {});

enum class PluginArgument { Added, Omitted };

// The tool of this build; unless told otherwise, pointed at the plug-in of this build.
ProgramRun runTool(std::vector<std::string> args, PluginArgument plugin = PluginArgument::Added,
                   const std::string &input = {});

}  // namespace tarvex_test
