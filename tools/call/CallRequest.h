#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

// The command line of `tarvex call`, checked but not yet acted on.
struct CallRequest {
    std::string exportName;
    std::vector<std::string> arguments;
    RhKind result = RH_NONE;
    std::optional<std::string> outPath;
    bool initialize = true;
    int table = RH_TABLE_FULL;
    std::optional<mint> argc;
    bool books = false;
    bool linkExport = false;
};

// Throws a usage error (status 2) for anything malformed.
CallRequest parseCallRequest(const std::vector<std::string> &words);

bool isLinkExport(std::string_view name);
// The result kind of each argument-vector export the tool knows.
std::optional<RhKind> defaultResultKind(std::string_view name);
// Whether the kernel passes a string in this argument slot of a known export.
bool takesStringAt(std::string_view name, std::size_t position);
std::optional<RhKind> findResultKind(std::string_view name);

}  // namespace tarvex_cli
