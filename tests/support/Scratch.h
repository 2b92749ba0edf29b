// Files that tests write, kept out of the source and build trees.
#pragma once

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace tarvex_test {

// A fresh directory under the system's temporary directory, removed with
// everything in it when the owner goes.
class ScratchDirectory {
public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory &) = delete;
    ScratchDirectory &operator=(const ScratchDirectory &) = delete;

    std::string path(const std::string &name) const { return (root_ / name).string(); }

private:
    std::filesystem::path root_;
};

// The test binary's own scratch directory, made on first use and removed at exit.
std::string scratchPath(const std::string &name);

// A test with a scratch directory of its own.
class ScratchTest : public ::testing::Test {
protected:
    std::string path(const std::string &name) const { return scratch_.path(name); }

private:
    ScratchDirectory scratch_;
};

// The whole file as bytes; empty when it cannot be read.
std::string fileContents(const std::filesystem::path &file);

}  // namespace tarvex_test
