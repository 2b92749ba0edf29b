#include "Command.h"

namespace tarvex_cli {
namespace {

// A function-local registry: commands register from static initialisers of
// other files, in an order the language leaves open.
std::vector<Command> &registry() {
    static std::vector<Command> all;
    return all;
}

}  // namespace

void registerCommand(const Command &command) { registry().push_back(command); }

const std::vector<Command> &commands() { return registry(); }

}  // namespace tarvex_cli
