#pragma once

#include <gtest/gtest.h>

#include "Scratch.h"
#include "refhost/refhost.h"

namespace tarvex_test {

// A second copy of the library is a second instance, loaded but never
// initialised: the state the kernel's calls meet before initialisation.
class UninitialisedPluginTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    RhPlugin *uninitialised_ = nullptr;

private:
    ScratchDirectory scratch_;
};

}  // namespace tarvex_test
