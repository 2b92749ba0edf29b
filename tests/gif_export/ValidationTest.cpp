// Every refusal of the two exports, one wrong argument at a time, with the
// code it gives and whether the file was created before the check.
#include <functional>

#include "ExportCalls.h"

namespace export_test {
namespace {

using tarvex_test::HostBooksGuard;

struct FramesCall {
    mint slices = 2, width = 4, height = 3, channels = 3;
    MImage_Data_Type type = MImage_Type_Bit8;
    MImage_CS_Type colorSpace = MImage_CS_RGB;
    mbool interleaved = 1;
    WriteOptions options;
    mint argc = 10;
};

template <class Call>
struct Refusal {
    const char *name;
    std::function<void(Call &)> change;
    int code;
    bool fileLeft;
};

WriteResult run(const FramesCall &call) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(call.slices, call.width, call.height, call.channels, call.type,
                           call.colorSpace, call.interleaved, 0, &image),
              0);
    const rh::Image owned(image);
    return writeFrames(image, call.options, call.argc);
}

const Refusal<FramesCall> kFramesRefusals[] = {
    {"TwoChannels", [](FramesCall &c) { c.channels = 2; c.colorSpace = MImage_CS_Gray; }, -10, false},
    {"FourChannels", [](FramesCall &c) { c.channels = 4; }, -10, false},
    {"SixteenBitSamples", [](FramesCall &c) { c.type = MImage_Type_Bit16; }, -10, false},
    {"RealSamples", [](FramesCall &c) { c.type = MImage_Type_Real32; }, -10, false},
    {"TooWide", [](FramesCall &c) { c.width = 65536; c.height = 1; c.slices = 1; }, -10, false},
    {"AutomaticColorSpace", [](FramesCall &c) { c.colorSpace = MImage_CS_Automatic; }, -10, false},
    {"HsbColorSpace", [](FramesCall &c) { c.colorSpace = MImage_CS_HSB; }, -10, false},
    {"PlanarRgb", [](FramesCall &c) { c.interleaved = 0; }, -10, false},
    {"DurationsTooMany", [](FramesCall &c) { c.options.durations = reals({1, 2, 3}); }, -10, true},
    {"DurationsIntegers", [](FramesCall &c) { c.options.durations = ints({1}); }, -10, true},
    {"DurationsMatrix", [](FramesCall &c) { c.options.durations = reals({1}, {1, 1}); }, -10, true},
    {"DitherLowerCase", [](FramesCall &c) { c.options.dither = "floydsteinberg"; }, -10, true},
    {"DitherEmpty", [](FramesCall &c) { c.options.dither = ""; }, -10, true},
    {"LoopsNegative", [](FramesCall &c) { c.options.loops = -1; }, -10, true},
    {"LoopsAboveLimit", [](FramesCall &c) { c.options.loops = 65536; }, -10, true},
    {"BackgroundTwoValues", [](FramesCall &c) { c.options.background = ints({1, 2}); }, -10, true},
    {"BackgroundFourValues", [](FramesCall &c) { c.options.background = ints({1, 2, 3, 4}); }, -10, true},
    {"BackgroundMatrix", [](FramesCall &c) { c.options.background = ints({1, 2, 3}, {1, 3}); }, -10, true},
    {"BackgroundReals", [](FramesCall &c) { c.options.background = reals({1, 2, 3}); }, -10, true},
    {"BackgroundChannel256", [](FramesCall &c) { c.options.background = ints({0, 256, 0}); }, -10, true},
    {"BackgroundNegative", [](FramesCall &c) { c.options.background = ints({-1}); }, -10, true},
    {"TransparencyRank3", [](FramesCall &c) { c.options.transparency = ints({1, 2, 3}, {1, 1, 3}); }, -10, true},
    {"TransparencyRowsNotFrames", [](FramesCall &c) { c.options.transparency = ints({1, 2, 3}, {1, 3}); }, -10, true},
    {"TransparencyOneGreyOnRgb", [](FramesCall &c) { c.options.transparency = ints({7}); }, -10, true},
    {"TransparencyPerFrameOnRgb", [](FramesCall &c) { c.options.transparency = ints({7, 8}); }, -10, true},
    {"TransparentColorNotInPalette", [](FramesCall &c) { c.options.transparency = ints({9, 9, 9}); }, -13, true},
    {"DisposalsTooMany", [](FramesCall &c) { c.options.disposals = ints({0, 1, 2}); }, -10, true},
    {"DisposalsMatrix", [](FramesCall &c) { c.options.disposals = ints({1}, {1, 1}); }, -10, true},
    {"DisposalsReals", [](FramesCall &c) { c.options.disposals = reals({1}); }, -10, true},
    {"DisposalFour", [](FramesCall &c) { c.options.disposals = ints({4}); }, -10, true},
    {"DisposalNegative", [](FramesCall &c) { c.options.disposals = ints({0, -1}); }, -10, true},
    {"DirectoryMissing", [](FramesCall &c) { c.options.file = "/nonexistent-dir/x.gif"; }, -10, false},
};

class FramesRefusal : public testing::TestWithParam<Refusal<FramesCall>> {};

TEST_P(FramesRefusal, AnswersItsCodeAndLeavesTheFileAsCreated) {
    HostBooksGuard guard;
    FramesCall call;
    const std::string file = outputPath(std::string(GetParam().name) + ".gif");
    call.options.file = file;
    GetParam().change(call);
    const WriteResult result = run(call);
    EXPECT_EQ(result.code, GetParam().code);
    EXPECT_FALSE(result.written);
    EXPECT_EQ(fileExists(file), GetParam().fileLeft);
}

INSTANTIATE_TEST_SUITE_P(WriteFrames, FramesRefusal, testing::ValuesIn(kFramesRefusals),
                         [](const auto &info) { return std::string(info.param.name); });

// The limits themselves pass, and the loop count is read on its low 32 bits.
TEST(FramesLimits, EdgeValuesAreAccepted) {
    HostBooksGuard guard;
    const std::function<void(FramesCall &)> accepted[] = {
        [](FramesCall &c) { c.width = 65535; c.height = 1; c.slices = 1; c.channels = 1; c.colorSpace = MImage_CS_Gray; },
        [](FramesCall &c) { c.options.loops = 65535; },
        [](FramesCall &c) { c.options.loops = mint{1} << 32; },
        [](FramesCall &c) { c.options.background = ints({255}); },
        [](FramesCall &c) { c.options.transparency = ints({0, 0, 0}); },
        [](FramesCall &c) { c.options.transparency = ints({300, 0, 0}); },
        [](FramesCall &c) { c.options.transparency = ints({0, 0, 0, 300, 0, 0}, {2, 3}); },
        [](FramesCall &c) { c.options.transparency = ints({0, 0, 0, 1, 1, 9, 9, 9, 9, 9}, {2, 5}); },
        [](FramesCall &c) { c.options.disposals = ints({3, 2}); },
    };
    int n = 0;
    for (const auto &change : accepted) {
        FramesCall call;
        change(call);
        call.options.file = outputPath("accepted" + std::to_string(n++) + ".gif");
        const WriteResult result = run(call);
        EXPECT_EQ(result.code, 0) << "case " << n - 1;
        EXPECT_EQ(result.fileName, call.options.file);
    }
}

struct ColormapsCall {
    std::vector<mint> mapDims{4, 3};
    MRawArray_Data_Type indexType = MRawArray_Type_UBit8;
    std::vector<mint> indexDims{2, 3, 4};
    WriteOptions options;
};

const Refusal<ColormapsCall> kColormapsRefusals[] = {
    {"IndicesSixteenBit", [](ColormapsCall &c) { c.indexType = MRawArray_Type_UBit16; }, -10, false},
    {"IndicesRank1", [](ColormapsCall &c) { c.indexDims = {12}; }, -10, false},
    {"IndicesRank4", [](ColormapsCall &c) { c.indexDims = {1, 2, 3, 4}; }, -10, false},
    {"IndicesTooWide", [](ColormapsCall &c) { c.indexDims = {1, 65536}; }, -10, false},
    {"OneGreyTransparency", [](ColormapsCall &c) { c.options.transparency = ints({1}); }, -10, true},
    {"MapRank1", [](ColormapsCall &c) { c.mapDims = {12}; }, -10, true},
    {"MapFourBytesAColor", [](ColormapsCall &c) { c.mapDims = {4, 4}; }, -10, true},
    {"MapThreeColors", [](ColormapsCall &c) { c.mapDims = {3, 3}; }, -10, true},
    {"MapOneColor", [](ColormapsCall &c) { c.mapDims = {1, 3}; }, -10, true},
    {"Map512Colors", [](ColormapsCall &c) { c.mapDims = {512, 3}; }, -10, true},
    {"MapsNotOnePerFrame", [](ColormapsCall &c) { c.mapDims = {3, 4, 3}; }, -10, true},
    {"TransparentColorNotInMap", [](ColormapsCall &c) { c.options.transparency = ints({1, 2, 3}); }, -13, true},
};

class ColormapsRefusalTest : public testing::TestWithParam<Refusal<ColormapsCall>> {};

TEST_P(ColormapsRefusalTest, AnswersItsCodeAndLeavesTheFileAsCreated) {
    HostBooksGuard guard;
    ColormapsCall call;
    call.options.file = outputPath(std::string("map") + GetParam().name + ".gif");
    GetParam().change(call);
    mint mapBytes = 1, indexCount = 1;
    for (mint d : call.mapDims) mapBytes *= d;
    for (mint d : call.indexDims) indexCount *= d;
    const rh::RawArray maps = byteArray(call.mapDims, std::vector<std::uint8_t>(std::size_t(mapBytes), 0));
    MRawArray indices = nullptr;
    ASSERT_EQ(rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->create(
                  call.indexType, mint(call.indexDims.size()), call.indexDims.data(), &indices),
              0);
    const rh::RawArray ownedIndices(indices);
    const WriteResult result = writeColormaps(maps.get(), indices, call.options);
    EXPECT_EQ(result.code, GetParam().code);
    EXPECT_FALSE(result.written);
    EXPECT_EQ(fileExists(call.options.file), GetParam().fileLeft);
}

INSTANTIATE_TEST_SUITE_P(WriteColormaps, ColormapsRefusalTest, testing::ValuesIn(kColormapsRefusals),
                         [](const auto &info) { return std::string(info.param.name); });

// A wrong count is refused before anything is read. (Integer arguments only:
// which positions hold strings is not known then, so strings would stay out.)
TEST(ArgumentCount, AWrongCountIsRefusedFirst) {
    tarvex_test::HostBooksGuard guard;
    const std::pair<const char *, std::vector<mint>> cases[] = {{"WriteFrames", {0, 1, 9, 11}},
                                                                {"WriteColormaps", {0, 10, 12}}};
    const std::vector<RhValue> args(12, RhValue{RH_INTEGER, {.integer = 0}, 0});
    for (const auto &[name, counts] : cases)
        for (mint argc : counts) {
            RhValue result{RH_STRING, {}, 0};
            EXPECT_EQ(rh_call(tarvex_test::plugin(), name, argc, args.data(), &result), QUORBEL_FUNCTION_ERROR)
                << name << " with " << argc;
            EXPECT_FALSE(result.written);
        }
}

// A device that takes no bytes makes giflib's writes fail: -9, whether the
// failure comes while writing (a large file) or only when the last bytes are
// flushed (a small one).
TEST(WriteFailure, ADeviceWithoutRoomGivesMinusNine) {
    if (!fileExists("/dev/full")) GTEST_SKIP() << "no /dev/full on this system";
    tarvex_test::HostBooksGuard guard;
    for (mint side : {2, 300}) {
        const rh::Image image = byteImage(1, side, side, 3, photoLike(int(side), int(side), 1, 3));
        WriteOptions options;
        options.file = "/dev/full";
        const WriteResult result = writeFrames(image.get(), options);
        EXPECT_EQ(result.code, -9) << side;
        EXPECT_FALSE(result.written);
    }
}

}  // namespace
}  // namespace export_test
