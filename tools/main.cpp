#include <algorithm>
#include <cstring>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Command.h"
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

enum class Request { RunCommand, Help, Version };

// Global options come before the command's name; `i` ends at the name.
Request readGlobalOptions(const std::vector<std::string> &words, std::size_t &i) {
    while (i < words.size() && words[i].rfind("-", 0) == 0) {
        const std::string &word = words[i];
        if (word == "--help" || word == "-h") {
            return Request::Help;
        } else if (word == "--version") {
            return Request::Version;
        } else if (word == "--plugin") {
            if (i + 1 >= words.size()) throw usageError("--plugin needs a path");
            setPluginPath(words[i + 1]);
            i += 2;
        } else if (word.rfind("--plugin=", 0) == 0) {
            setPluginPath(word.substr(9));
            ++i;
        } else {
            throw usageError("unknown option '" + word + "'; see tarvex --help");
        }
    }
    return Request::RunCommand;
}

int run(const std::vector<std::string> &words) {
    std::size_t at = 0;
    switch (readGlobalOptions(words, at)) {
    case Request::Help: printUsage(); return 0;
    case Request::Version: std::cout << "tarvex " << TARVEX_VERSION << '\n'; return 0;
    case Request::RunCommand: break;
    }
    if (at >= words.size()) throw usageError("no command given; see tarvex --help");
    const Command *command = findCommand(words[at]);
    if (command == nullptr) throw usageError("unknown command '" + words[at] + "'; see tarvex --help");
    const std::vector<std::string> args(words.begin() + static_cast<std::ptrdiff_t>(at) + 1, words.end());
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
        std::cerr << "tarvex: " << error.what() << '\n';
        status = error.exitStatus;
    } catch (const std::exception &error) {
        std::cerr << "tarvex: " << error.what() << '\n';
        status = 1;
    }
    std::cout.flush();
    unloadPlugin();
    return status;
}
