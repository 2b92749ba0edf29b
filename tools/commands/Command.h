#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

// A failure that the tool reports as "tarvex: <message>" and exit status 2
// (a bad command line) or 1 (anything else).
struct CliError : std::runtime_error {
    explicit CliError(const std::string &message, int status = 1)
        : std::runtime_error(message), exitStatus(status) {}
    int exitStatus;
};

inline CliError usageError(const std::string &message) { return CliError(message, 2); }

// One subcommand. `run` gets the words after the subcommand's name and returns
// the exit status; it throws CliError for anything the user must hear about.
struct Command {
    const char *name;
    const char *summary;  // one line for `tarvex --help`
    const char *help;     // the whole text of `tarvex NAME --help`
    int (*run)(const std::vector<std::string> &args);
};

// Subcommands register themselves from their own file:
//   static const tarvex_cli::RegisterCommand registered{{"info", "...", kHelp, &runInfo}};
void registerCommand(const Command &command);
const std::vector<Command> &commands();

struct RegisterCommand {
    explicit RegisterCommand(const Command &command) { registerCommand(command); }
};

// The plug-in, loaded and initialised on first use and unloaded at exit. It is
// found through --plugin (see setPluginPath), then $TARVEX_PLUGIN, then beside
// the tool (the build tree and the installed layout).
RhPlugin *plugin();
void setPluginPath(const std::string &path);

}  // namespace tarvex_cli
