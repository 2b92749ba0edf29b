// What the tool's tests share.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Command.h"
#include "Scratch.h"
#include "ToolRun.h"
#include "refhost/refhost.hpp"

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

// A failure as users see it: the exit status, and one line on standard error,
// "tarvex: " first, that holds `message`.
void expectToolMessage(const tarvex_test::ProgramRun &run, int status, const std::string &message);

using SampleOf = std::function<std::uint16_t(int pixel, int channel)>;

// A host image of `channels` channels of 8 or 16 bits whose sample k of pixel
// i is sample(i, k); with `alpha` the last channel is flagged as alpha.
rh::Image testImage(int width, int height, int channels, int bits, const SampleOf &sample, bool alpha = false);
// The same image written as a PNG; returns `path`.
std::string writeTestPng(const std::string &path, int width, int height, int channels, int bits,
                         const SampleOf &sample, bool alpha = false);

// The samples of a PNG as the tool reads it, with its bits and channels.
struct PngSamples {
    int bits = 0, channels = 0, width = 0, height = 0;
    std::vector<std::uint16_t> samples;
    std::set<std::vector<std::uint16_t>> colors() const;  // the distinct pixels
};
PngSamples readTestPng(const std::string &path);
