// The exported entry points through the reference host: what the kernel sees
// of every call frame, before and after initialisation.
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Plugin.h"
#include "UninitialisedPlugin.h"

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

MImage byteImage(mint channels) {
    MImage result = nullptr;
    EXPECT_EQ(rh_image_new(0, 4, 3, channels, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &result), 0);
    return result;
}

void freeImage(MImage image) { rh_library_data(RH_TABLE_FULL)->imageFunctions->free(image); }

int callWith(RhPlugin *p, const char *name, const std::vector<RhValue> &args,
             RhKind resultKind = RH_IMAGE, mbool *written = nullptr) {
    RhValue result{resultKind, {}, 0};
    const int code = rh_call(p, name, static_cast<mint>(args.size()), args.data(), &result);
    if (written != nullptr) *written = result.written;
    return code;
}

TEST(EntryPoints, OnlyTheLifeCycleAndTheExportsLeaveTheLibrary) {
    if (std::system("command -v nm >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "nm is not on PATH, so the exported symbols cannot be listed";
    const std::string command = std::string("nm -D --defined-only ") + TARVEX_PLUGIN_PATH;
    FILE *pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr) << "could not start: " << command;
    std::set<std::string> defined;
    char line[512];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        char type = 0, name[400] = {};
        if (std::sscanf(line, "%*s %c %399s", &type, name) == 2 && type == 'T') defined.insert(name);
    }
    const int status = pclose(pipe);
    ASSERT_EQ(status, 0) << "'" << command << "' failed (status " << status
                         << "); its symbol list cannot be trusted";
    EXPECT_EQ(defined, kEntryPoints);
}

TEST(EntryPoints, StringSeparatorAnswersTheLibrarysOwnConstant) {
    HostBooksGuard guard;
    RhValue result{RH_STRING, {}, 0};
    ASSERT_EQ(rh_call(plugin(), "StringSeparator", 0, nullptr, &result), 0);
    ASSERT_TRUE(result.written);
    EXPECT_EQ(std::string(result.value.string), "\x02\x07\x07\x07\x03");
}

// A wrong argument count is refused before anything is read.
TEST(EntryPoints, WritersRefuseAnyOtherArgumentCount) {
    HostBooksGuard guard;
    std::vector<RhValue> nine(9, integer(0)), ten(10, integer(0)), eleven(11, integer(0));
    mbool written = 0;
    EXPECT_EQ(callWith(plugin(), "WriteFrames", nine, RH_STRING, &written), QUORBEL_FUNCTION_ERROR);
    EXPECT_FALSE(written);
    EXPECT_EQ(callWith(plugin(), "WriteFrames", eleven, RH_STRING), QUORBEL_FUNCTION_ERROR);
    EXPECT_EQ(callWith(plugin(), "WriteColormaps", ten, RH_STRING), QUORBEL_FUNCTION_ERROR);
}

// Argument failures are host-interface errors: each export folds them into
// its own fixed code and leaves the result unwritten.
TEST(EntryPoints, ArgumentFailuresBecomeEachExportsCode) {
    HostBooksGuard guard;
    mbool written = 1;
    EXPECT_EQ(callWith(plugin(), "DitherImage", {}, RH_IMAGE, &written), -14);
    EXPECT_FALSE(written);
    EXPECT_EQ(callWith(plugin(), "ImageQuantize", {}, RH_RAW_ARRAY), -14);
    EXPECT_EQ(callWith(plugin(), "GetQuantizedImage", {}, RH_IMAGE), -14);
    EXPECT_EQ(callWith(plugin(), "UniqueColors", {}, RH_INTEGER), -14);

    MImage five = byteImage(5);
    EXPECT_EQ(callWith(plugin(), "UniqueColors", {image(five), integer(1)}, RH_INTEGER), -14);
    EXPECT_EQ(callWith(plugin(), "DitherImage", {image(five)}), -14);
    freeImage(five);
}

// The kernel's copy of a string belongs to the call, also when the worker
// fails before it reads the string.
TEST(EntryPoints, StringsAreGivenBackWhenTheWorkerFailsBeforeReadingThem) {
    HostBooksGuard guard;
    MImage five = byteImage(5);
    EXPECT_EQ(callWith(plugin(), "ImageQuantize", {image(five), integer(4), text("None")},
                       RH_RAW_ARRAY),
              -14);
    EXPECT_EQ(callWith(plugin(), "DitherImage", {image(five), integer(0), text("None")}), -14);
    std::vector<RhValue> write(10, integer(0));
    write[1] = text("out.gif"), write[2] = text(""), write[4] = text("None");
    EXPECT_EQ(callWith(plugin(), "WriteFrames", write, RH_STRING), -10);
    freeImage(five);
}

TEST(EntryPoints, AHandleOfTheWrongKindIsRefusedNotFollowed) {
    MRawArray array = nullptr;
    const mint dims[] = {2, 3};
    ASSERT_EQ(rh_library_data(RH_TABLE_FULL)
                  ->rawArrayFunctions->create(MRawArray_Type_UBit8, 2, dims, &array),
              0);
    const long badHandles = rh_counters().badHandles;
    RhValue disguised{RH_RAW_ARRAY, {.rawArray = array}, 0};
    RhValue result{RH_RAW_ARRAY, {}, 0};
    EXPECT_EQ(rh_call(plugin(), "ImageQuantize", 1, &disguised, &result), -14);
    EXPECT_FALSE(result.written);
    EXPECT_GT(rh_counters().badHandles, badHandles);
    rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->free(array);
}

using Uninitialised = tarvex_test::UninitialisedPluginTest;

TEST_F(Uninitialised, EveryFramedExportAnswersItsCatchCode) {
    HostBooksGuard guard;
    MImage rgb = byteImage(3);
    mbool written = 1;
    EXPECT_EQ(callWith(uninitialised_, "DitherImage", {image(rgb), integer(0)}, RH_IMAGE,
                       &written),
              -14);
    EXPECT_FALSE(written);
    EXPECT_EQ(callWith(uninitialised_, "ImageQuantize", {image(rgb)}, RH_RAW_ARRAY), -14);
    EXPECT_EQ(callWith(uninitialised_, "GetQuantizedImage", {image(rgb)}), -14);
    EXPECT_EQ(callWith(uninitialised_, "UniqueColors", {image(rgb)}, RH_INTEGER), -14);
    EXPECT_EQ(callWith(uninitialised_, "WriteFrames", std::vector<RhValue>(10, integer(0)), RH_STRING), -10);
    EXPECT_EQ(callWith(uninitialised_, "WriteColormaps", std::vector<RhValue>(11, integer(0)), RH_STRING),
              -10);
    RhValue separator{RH_STRING, {}, 0};
    EXPECT_EQ(rh_call(uninitialised_, "StringSeparator", 0, nullptr, &separator), 0);
    EXPECT_TRUE(separator.written);
    freeImage(rgb);
}

}  // namespace
