#pragma once

#include <string>

#include <gtest/gtest.h>

#include "refhost/refhost.h"

namespace tarvex_test {

// The plug-in under test, loaded and initialised once per test binary with the
// full callback table.
RhPlugin *plugin();

// Checks that a scope leaves the host's books as it found them: no image, raw
// array or tensor alive that was not alive before, every argument string given
// back exactly once, no unknown handle used and no message posted.
class HostBooksGuard {
public:
    HostBooksGuard();
    ~HostBooksGuard();
    HostBooksGuard(const HostBooksGuard &) = delete;
    HostBooksGuard &operator=(const HostBooksGuard &) = delete;

private:
    RhCounters before_;
};

// Calls a link export with arguments in input form and returns its answer in
// input form (empty when there is none). The code goes to *code.
std::string callLink(const char *name, const char *arguments, int *code);

}  // namespace tarvex_test
