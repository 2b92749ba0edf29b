// What the tool's tests share.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "Command.h"

// The message of the CliError that `action` throws, having checked its exit status.
template <class Action>
std::string cliFailure(Action &&action, int exitStatus) {
    try {
        action();
    } catch (const tarvex_cli::CliError &error) {
        EXPECT_EQ(error.exitStatus, exitStatus);
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return {};
}

// A test with a directory of its own for the files it writes.
class ScratchTest : public ::testing::Test {
protected:
    void SetUp() override {
        directory_ = std::filesystem::temp_directory_path() / ("tarvex-tools-" + std::to_string(getpid()));
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string path(const std::string &name) const { return (directory_ / name).string(); }

private:
    std::filesystem::path directory_;
};
