#include "ToolRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "Scratch.h"

extern char **environ;

namespace tarvex_test {

ProgramRun runProgram(const std::string &program, const std::vector<std::string> &args,
                      const std::string &input) {
    const ScratchDirectory files;
    const std::string in = files.path("stdin"), out = files.path("stdout"), err = files.path("stderr");
    std::ofstream(in, std::ios::binary) << input;

    std::vector<std::string> words = args;
    words.insert(words.begin(), program);
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) return {-1, {}, "cannot start " + program + ": " + std::strerror(spawned), false};
    int status = 0;
    waitpid(child, &status, 0);
    ProgramRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileContents(out), fileContents(err)};
    EXPECT_TRUE(WIFEXITED(status)) << program << " crashed: " << run.err;
    return run;
}

ProgramRun runTool(std::vector<std::string> args, PluginArgument plugin, const std::string &input) {
    if (plugin == PluginArgument::Added) args.insert(args.begin(), {"--plugin", TARVEX_PLUGIN_PATH});
    return runProgram(TARVEX_TOOL_PATH, args, input);
}

}  // namespace tarvex_test
