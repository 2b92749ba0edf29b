#pragma once

#include <string>
#include <vector>

#include "ArgumentSyntax.h"
#include "refhost/refhost.h"

namespace tarvex_cli {

// The host objects behind the arguments of one call. The host owns its
// arguments, so they are freed here after the call, never by the plug-in.
class HostArguments {
public:
    // Reads the files that arguments name and makes the images, raw arrays
    // and tensors.
    explicit HostArguments(const std::vector<Argument> &arguments);
    ~HostArguments();
    HostArguments(const HostArguments &) = delete;
    HostArguments &operator=(const HostArguments &) = delete;

    // The first `count` values, padded with empty (zero) slots when there
    // are fewer.
    std::vector<RhValue> slots(std::size_t count) const;

    // The 1-based position of the argument whose object this is, or 0.
    std::size_t positionOf(const void *handle) const;

    // Frees every object; returns a note for each one that the plug-in had
    // already freed.
    std::vector<std::string> release();

private:
    RhValue make(const Argument &argument, std::string &stringStorage);

    std::vector<std::string> strings_;
    std::vector<RhValue> values_;
};

}  // namespace tarvex_cli
