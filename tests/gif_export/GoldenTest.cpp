// Checksums of whole written files for fixed inputs. They were taken from
// the plain implementation; any change of a byte shows here.
#include "ExportCalls.h"
#include "GoldenChecksums.h"

namespace export_test {
namespace {

struct Golden {
    const char *name;
    mint channels;
    const char *dither;
    bool interlace;
    std::uint64_t checksum;
};

const Golden kGoldens[] = {
    {"RgbPlain", 3, "None", false, 0x6fee1197ee012812},
    {"RgbDithered", 3, "FloydSteinberg", false, 0x4d89c419c2305bc0},
    {"RgbDitheredInterlaced", 3, "FloydSteinberg", true, 0x9bcd9948fe7c08d5},
    {"GreyPlain", 1, "None", false, 0x8754354b01e842e0},
    {"GreyDithered", 1, "FloydSteinberg", true, 0x8b2fa27a1639c121},
};

class WrittenFile : public testing::TestWithParam<Golden> {};

TEST_P(WrittenFile, MatchesItsChecksum) {
    const Golden &g = GetParam();
    const mint w = 61, h = 37, slices = 3;
    std::vector<std::uint8_t> samples = photoLike(int(w), int(h), int(slices), 11);
    if (g.channels == 1)
        for (std::size_t i = 0; i < samples.size() / 3; ++i) samples[i] = samples[3 * i + 1];
    samples.resize(std::size_t(w * h * slices * g.channels));
    WriteOptions options;
    options.file = outputPath(std::string(g.name) + ".gif");
    options.dither = g.dither;
    options.interlace = g.interlace;
    options.comments = "golden";
    options.durations = reals({0.04, 0.08, 0.12});
    options.loops = 2;
    const rh::Image image = byteImage(slices, w, h, g.channels, samples);
    ASSERT_EQ(writeFrames(image.get(), options).code, 0);
    const std::uint64_t sum = tarvex_test::checksumOf(fileBytes(options.file));
    EXPECT_EQ(sum, g.checksum) << g.name << ": 0x" << std::hex << sum;
}

INSTANTIATE_TEST_SUITE_P(Goldens, WrittenFile, testing::ValuesIn(kGoldens),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace
}  // namespace export_test
