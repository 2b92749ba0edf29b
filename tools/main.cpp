#include <algorithm>
#include <cstring>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "Command.h"
#include "Escapes.h"
#include "FileAccess.h"
#include "LibraryVersions.h"
#include "Options.h"
#include "PluginDiscovery.h"

namespace tarvex_cli {
namespace {

void printUsage() {
    std::cout << "usage: tarvex [--plugin PATH] COMMAND [ARG...]\n"
                 "       tarvex COMMAND --help\n"
                 "       tarvex --help | --version\n"
                 "\n"
                 "Reads and writes GIF files, quantizes and dithers images through the\n"
                 "Tarvex plug-in, loaded the way the kernel loads it.\n"
                 "\n"
                 "Commands:\n";
    std::vector<Command> sorted = commands();
    std::sort(sorted.begin(), sorted.end(),
              [](const Command &a, const Command &b) { return std::string(a.name) < b.name; });
    std::size_t width = 0;
    for (const Command &command : sorted) width = std::max(width, std::strlen(command.name));
    for (const Command &command : sorted) {
        const std::string name = command.name;
        std::cout << "  " << name << std::string(width + 2 - name.size(), ' ') << command.summary
                  << '\n';
    }
    std::cout << "\n"
                 "Options:\n"
                 "  --plugin PATH  the plug-in to load; otherwise $TARVEX_PLUGIN, otherwise\n"
                 "                 libTarvex.so beside the tool (build tree or installation)\n"
                 "  -q, --quiet    no progress lines or summaries, only errors (also after\n"
                 "                 the command's name)\n"
                 "  --version      the tool's version and those of giflib, libspng and\n"
                 "                 libjpeg-turbo\n"
                 "\n"
                 "A file name - stands for standard input or standard output.\n"
                 "\n"
                 "Exit status: 0 success, 1 failure, 2 bad command line.\n";
}

const Command *findCommand(const std::string &name) {
    for (const Command &command : commands())
        if (name == command.name) return &command;
    return nullptr;
}

bool asksForHelp(const std::vector<std::string> &args) {
    for (const std::string &arg : args) {
        if (arg == "--") return false;
        if (arg == "--help" || arg == "-h") return true;
    }
    return false;
}

const std::vector<OptionRule> kGlobalOptions{{"--help", "-h"}, {"--version"}, {"--plugin", {}, true}};

int run(const std::vector<std::string> &words) {
    const ParsedOptions global = readOptions("", words, kGlobalOptions, OptionPlacement::BeforeOperands);
    if (global.has("--help")) {
        printUsage();
        return 0;
    }
    if (global.has("--version")) {
        std::cout << "tarvex " << TARVEX_VERSION << '\n' << libraryVersions();
        return 0;
    }
    if (auto path = global.value("--plugin")) setPluginPath(*path);
    const std::vector<std::string> &rest = global.operands();
    if (rest.empty()) throw usageError("no command given; see tarvex --help");
    const Command *command = findCommand(rest.front());
    if (command == nullptr) throw usageError("unknown command '" + rest.front() + "'; see tarvex --help");
    const std::vector<std::string> args(rest.begin() + 1, rest.end());
    if (asksForHelp(args)) {
        std::cout << command->help;
        return 0;
    }
    return command->run(args);
}

}  // namespace
}  // namespace tarvex_cli

int main(int argc, char **argv) {
    using namespace tarvex_cli;
    int status;
    try {
        status = run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const CliError &error) {
        std::cerr << "tarvex: " << printableText(namingStandardInput(error.what())) << '\n';
        status = error.exitStatus;
    } catch (const std::bad_alloc &) {
        std::cerr << "tarvex: not enough memory\n";
        status = 1;
    } catch (const std::exception &error) {
        std::cerr << "tarvex: " << printableText(namingStandardInput(error.what())) << '\n';
        status = 1;
    }
    std::cout.flush();
    unloadPlugin();
    return status;
}
