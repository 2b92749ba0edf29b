// What the tool's tests share.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "Command.h"
#include "Scratch.h"

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

using tarvex_test::ScratchTest;
