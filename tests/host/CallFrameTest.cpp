// The exported entry points through the reference host: what the kernel sees
// of every call frame, before and after initialisation.
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Plugin.h"
#include "ToolRun.h"
#include "UninitialisedPlugin.h"
#include "refhost/refhost.hpp"

using tarvex_test::HostBooksGuard;
using tarvex_test::plugin;

namespace {

const std::set<std::string> kEntryPoints = {
    "QuorbelLibrary_initialize", "QuorbelLibrary_uninitialize", "StringSeparator", "ClearCache",
    "ReadFileMetadata", "ReadFrameMetadata", "ReadPalettes", "ReadRasterBits", "ReadGlobalPalette",
    "ReadOneFrame", "ReadAllFrames", "WriteFrames", "WriteColormaps", "ImageQuantize",
    "GetQuantizedImage", "UniqueColors", "DitherImage"};

RhValue integer(mint v) { return RhValue{RH_INTEGER, {.integer = v}, 0}; }
RhValue image(MImage v) { return RhValue{RH_IMAGE, {.image = v}, 0}; }
RhValue text(const char *v) { return RhValue{RH_STRING, {.string = v}, 0}; }

rh::Image byteImage(mint channels) {
    MImage result = nullptr;
    EXPECT_EQ(rh_image_new(0, 4, 3, channels, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &result), 0);
    return rh::Image(result);
}

// A call that must be refused with `code`, its result left unwritten.
struct Refused {
    const char *name;
    std::vector<RhValue> args;
    RhKind result;
    int code;
};

void expectRefused(RhPlugin *p, const std::vector<Refused> &calls) {
    for (const Refused &c : calls) {
        RhValue result{c.result, {}, 0};
        EXPECT_EQ(rh_call(p, c.name, static_cast<mint>(c.args.size()), c.args.data(), &result), c.code)
            << c.name << " with " << c.args.size() << " arguments";
        EXPECT_FALSE(result.written) << c.name;
    }
}

TEST(EntryPoints, OnlyTheLifeCycleAndTheExportsLeaveTheLibrary) {
    const tarvex_test::ProgramRun nm =
        tarvex_test::runProgram("nm", {"-D", "--defined-only", TARVEX_PLUGIN_PATH});
    if (!nm.started) GTEST_SKIP() << "the exported symbols cannot be listed: " << nm.err;
    ASSERT_EQ(nm.status, 0) << "nm failed, so its symbol list cannot be trusted: " << nm.err;
    std::set<std::string> defined;
    std::istringstream lines(nm.out);
    for (std::string line; std::getline(lines, line);) {
        char type = 0, name[400] = {};
        if (std::sscanf(line.c_str(), "%*s %c %399s", &type, name) == 2 && type == 'T') defined.insert(name);
    }
    EXPECT_EQ(defined, kEntryPoints);
}

// Argument failures are host-interface errors: each export folds them into
// its own fixed code and leaves the result unwritten. The kernel's copy of a
// string belongs to the call, also when the worker fails before reading it.
TEST(EntryPoints, ArgumentFailuresBecomeEachExportsCode) {
    HostBooksGuard guard;
    const rh::Image five = byteImage(5);
    std::vector<RhValue> write(10, integer(0));
    write[1] = text("out.gif"), write[2] = text(""), write[4] = text("None");
    expectRefused(plugin(), {{"DitherImage", {}, RH_IMAGE, -14},
                             {"ImageQuantize", {}, RH_RAW_ARRAY, -14},
                             {"GetQuantizedImage", {}, RH_IMAGE, -14},
                             {"UniqueColors", {}, RH_INTEGER, -14},
                             {"UniqueColors", {image(five.get()), integer(1)}, RH_INTEGER, -14},
                             {"DitherImage", {image(five.get())}, RH_IMAGE, -14},
                             {"ImageQuantize", {image(five.get()), integer(4), text("None")}, RH_RAW_ARRAY, -14},
                             {"DitherImage", {image(five.get()), integer(0), text("None")}, RH_IMAGE, -14},
                             {"WriteFrames", write, RH_STRING, -10}});
}

TEST(EntryPoints, AHandleOfTheWrongKindIsRefusedNotFollowed) {
    MRawArray array = nullptr;
    const mint dims[] = {2, 3};
    ASSERT_EQ(rh_raw_array_new(MRawArray_Type_UBit8, 2, dims, &array), 0);
    const rh::RawArray owned(array);
    const long badHandles = rh_counters().badHandles;
    expectRefused(plugin(), {{"ImageQuantize", {RhValue{RH_RAW_ARRAY, {.rawArray = array}, 0}}, RH_RAW_ARRAY, -14}});
    EXPECT_GT(rh_counters().badHandles, badHandles);
}

using Uninitialised = tarvex_test::UninitialisedPluginTest;

TEST_F(Uninitialised, EveryFramedExportAnswersItsCatchCode) {
    HostBooksGuard guard;
    const rh::Image rgb = byteImage(3);
    expectRefused(uninitialised_, {{"DitherImage", {image(rgb.get()), integer(0)}, RH_IMAGE, -14},
                                   {"ImageQuantize", {image(rgb.get())}, RH_RAW_ARRAY, -14},
                                   {"GetQuantizedImage", {image(rgb.get())}, RH_IMAGE, -14},
                                   {"UniqueColors", {image(rgb.get())}, RH_INTEGER, -14},
                                   {"WriteFrames", std::vector<RhValue>(10, integer(0)), RH_STRING, -10},
                                   {"WriteColormaps", std::vector<RhValue>(11, integer(0)), RH_STRING, -10}});
    // The separator is the library's own constant, needing no table.
    RhValue separator{RH_STRING, {}, 0};
    ASSERT_EQ(rh_call(uninitialised_, "StringSeparator", 0, nullptr, &separator), 0);
    ASSERT_TRUE(separator.written);
    EXPECT_EQ(std::string(separator.value.string), "\x02\x07\x07\x07\x03");
}

}  // namespace
