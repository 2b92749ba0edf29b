// `tarvex quantize` and `tarvex colors` over the quantization exports.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Support.h"
#include "ToolRun.h"

using namespace tarvex_test;

namespace {

class QuantizeCommand : public ScratchTest {
protected:
    // A smooth picture of many colours, 8 or 16 bits, with 1 to 4 channels.
    std::string picture(int channels, int bits = 8, bool alpha = false) {
        const int scale = bits == 16 ? 257 : 1;
        return writeTestPng(
            path("in-" + std::to_string(channels) + "-" + std::to_string(bits) + ".png"), 48, 32, channels, bits,
            [&](int i, int k) { return std::uint16_t(((i % 48) * 5 + (i / 48) * 3 * k + k * 20) % 256 * scale); },
            alpha);
    }

    // Raw samples of many colours, one byte a sample for "bit" (0 or 1) and
    // four for "real32"; 8 by 6 pixels a slice.
    std::string rawPicture(const std::string &type, int channels, int slices) {
        const int count = 8 * 6 * channels * std::max(slices, 1);
        std::string bytes;
        for (int i = 0; i < count; ++i) {
            if (type == "bit") {
                bytes.push_back(char(((i / channels + i / channels / 8) >> (i % channels)) & 1));
            } else {
                const float sample = float((i * 7 + i / channels * 13) % 29) / 29.0f;
                bytes.append(reinterpret_cast<const char *>(&sample), sizeof sample);
            }
        }
        const std::string file =
            path("in-" + type + "-" + std::to_string(channels) + "-" + std::to_string(slices) + ".raw");
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

    ProgramRun quantize(const std::string &in, std::vector<std::string> more) {
        more.insert(more.begin(), {"quantize", in});
        return runTool(more);
    }

    long long colors(const std::string &file, bool ordered = false) {
        std::vector<std::string> args{"colors", file};
        if (ordered) args.push_back("--ordered");
        const ProgramRun run = runTool(args);
        EXPECT_EQ(run.status, 0) << run.err;
        return std::stoll(run.out);
    }
};

}  // namespace

TEST_F(QuantizeCommand, EveryMethodStaysWithinTheColoursAskedFor) {
    const std::string in = picture(3);
    for (const char *method : {"median-cut", "wu", "octree", "MedianCut", "3"})
        for (const char *dither : {"none", "floyd-steinberg", "FloydSteinberg"}) {
            SCOPED_TRACE(std::string(method) + " " + dither);
            const ProgramRun run = quantize(in, {"-o", path("q.png"), "--colors", "12", "--method", method,
                                                 "--dither", dither, "--bits", "5"});
            ASSERT_EQ(run.status, 0) << run.err;
            const std::size_t produced = readTestPng(path("q.png")).colors().size();
            EXPECT_LE(produced, 12u);
            EXPECT_EQ(run.err.rfind("tarvex quantize: " + std::to_string(produced) + " colours, ", 0), 0u) << run.err;
        }
}

// Wu's four-channel table at 6 bits takes 860 MB whatever the picture, so
// the default there is 5; every other case keeps 6.
TEST_F(QuantizeCommand, DefaultBitsAreFiveOnlyForWuOnFourChannels) {
    const auto sameAs = [&](const std::string &in, const std::string &method, const char *bits) {
        EXPECT_EQ(quantize(in, {"-o", path("default.png"), "--colors", "16", "--method", method}).status, 0);
        EXPECT_EQ(quantize(in, {"-o", path("given.png"), "--colors", "16", "--method", method, "--bits", bits}).status,
                  0);
        return readTestPng(path("default.png")).samples == readTestPng(path("given.png")).samples;
    };
    const std::string rgba = picture(4, 8, true), rgb = picture(3);
    EXPECT_TRUE(sameAs(rgba, "wu", "5"));  // and not as 6, which costs the 860 MB
    EXPECT_TRUE(sameAs(rgba, "median-cut", "6"));
    EXPECT_TRUE(sameAs(rgb, "wu", "6"));
    EXPECT_FALSE(sameAs(rgb, "wu", "5"));
}

// Sample depth and channels as the file has them; alpha is an ordinary
// channel. `colors` counts as an independent count does, both ways.
TEST_F(QuantizeCommand, KeepsTheFilesDepthAndChannels) {
    const struct {
        int channels, bits;
        bool alpha;
    } cases[] = {{1, 8, false}, {2, 8, true}, {3, 16, false}, {4, 8, true}, {4, 16, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(std::to_string(c.channels) + " channels, " + std::to_string(c.bits) + " bits");
        const std::string in = picture(c.channels, c.bits, c.alpha);
        const auto distinct = static_cast<long long>(readTestPng(in).colors().size());
        EXPECT_EQ(colors(in), distinct);
        EXPECT_EQ(colors(in, true), distinct);
        const ProgramRun run = quantize(in, {"-o", path("q.png"), "--colors", "8", "--bits", "3"});
        ASSERT_EQ(run.status, 0) << run.err;
        const PngSamples out = readTestPng(path("q.png"));
        EXPECT_EQ(out.bits, c.bits);
        EXPECT_EQ(out.channels, c.channels);
        EXPECT_LE(out.colors().size(), 8u);
        EXPECT_EQ(colors(path("q.png")), static_cast<long long>(out.colors().size()));
    }
}

// Without dithering every pixel takes its nearest palette colour, so the
// palette written as text and handed to dither redraws the same picture, and
// the indices pick the same colours.
TEST_F(QuantizeCommand, PaletteAndIndicesAgreeWithTheRedrawnImage) {
    const std::string in = picture(3);
    const ProgramRun run = quantize(in, {"-o", path("q.png"), "--colors", "10", "--dither", "none", "--method",
                                         "median-cut", "--palette-out", path("p.txt"), "--indices-out",
                                         path("i.png")});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_EQ(runTool({"dither", in, "-o", path("d.png"), "--palette", path("p.txt"), "--method", "none"}).status, 0);
    const PngSamples quantized = readTestPng(path("q.png"));
    EXPECT_EQ(readTestPng(path("d.png")).samples, quantized.samples);

    std::vector<std::vector<int>> palette;
    std::ifstream text(path("p.txt"));
    for (std::string line; std::getline(text, line);)
        palette.push_back({std::stoi(line.substr(1, 2), nullptr, 16), std::stoi(line.substr(3, 2), nullptr, 16),
                           std::stoi(line.substr(5, 2), nullptr, 16)});
    EXPECT_LE(palette.size(), 10u);
    const PngSamples indices = readTestPng(path("i.png"));
    ASSERT_EQ(indices.samples.size() * 3, quantized.samples.size());
    for (std::size_t p = 0; p < indices.samples.size(); ++p) {
        ASSERT_LT(indices.samples[p], palette.size());
        const std::vector<int> &color = palette[indices.samples[p]];
        EXPECT_EQ(std::vector<int>(quantized.samples.begin() + long(3 * p), quantized.samples.begin() + long(3 * p + 3)),
                  color);
    }
}

// Asked for the indices, the command draws the image from them and the
// palette rather than running the method a third time. The result must be
// GetQuantizedImage's to the bit: samples, depth, channels, shape, colour
// space and alpha flag, which a raw output's layout line shows.
TEST_F(QuantizeCommand, RedrawingFromTheIndicesGivesTheSameImage) {
    struct Input {
        std::string file, layout;  // no layout: a PNG
    };
    std::vector<Input> inputs;
    for (int channels = 1; channels <= 4; ++channels) {
        const bool alpha = channels % 2 == 0;
        inputs.push_back({picture(channels, 8, alpha), ""});
        inputs.push_back({picture(channels, 16, alpha), ""});
        inputs.push_back({rawPicture("real32", channels, 0),
                          "type=real32,width=8,height=6,channels=" + std::to_string(channels) +
                              (channels == 4 ? ",alpha" : "")});
    }
    inputs.push_back({rawPicture("real32", 3, 2), "type=real32,width=8,height=6,channels=3,slices=2,cs=rgb"});
    inputs.push_back({rawPicture("bit", 3, 0), "type=bit,width=8,height=6,channels=3"});
    // The last line of standard error starts with the colours produced.
    const auto colourCount = [](const std::string &err) {
        const std::size_t at = err.rfind("tarvex quantize: ");
        return at == std::string::npos ? err : err.substr(at, err.find(',', at) - at);
    };
    for (const Input &input : inputs)
        for (const char *method : {"median-cut", "wu", "octree"})
            for (const char *dither : {"none", "floyd-steinberg"}) {
                SCOPED_TRACE(input.file + " " + input.layout + " " + method + " " + dither);
                const std::string out = input.layout.empty() ? ".png" : ".raw";
                std::vector<std::string> args{"--colors", "7", "--method", method, "--dither", dither, "--bits", "4"};
                if (!input.layout.empty()) args.insert(args.end(), {"--layout", input.layout});
                std::vector<std::string> drawn = args, indexed = args;
                drawn.insert(drawn.end(), {"-o", path("drawn" + out)});
                indexed.insert(indexed.end(), {"-o", path("indexed" + out), "--indices-out", path("i.raw")});
                const ProgramRun plain = quantize(input.file, drawn), fromIndices = quantize(input.file, indexed);
                ASSERT_EQ(plain.status, 0) << plain.err;
                ASSERT_EQ(fromIndices.status, 0) << fromIndices.err;
                EXPECT_EQ(plain.out, fromIndices.out);
                EXPECT_EQ(colourCount(plain.err), colourCount(fromIndices.err));
                EXPECT_EQ(fileContents(path("drawn" + out)), fileContents(path("indexed" + out)));
            }
}

// "-" is standard output for the indices as for every other output: no
// file called "-" appears.
TEST_F(QuantizeCommand, IndicesGoToStandardOutput) {
    const std::string in = picture(3);
    ASSERT_EQ(quantize(in, {"-o", path("q.png"), "--colors", "10", "--indices-out", path("i.raw")}).status, 0);
    const ProgramRun run = quantize(in, {"-o", path("q.png"), "--colors", "10", "--indices-out", "-"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, fileContents(path("i.raw")));
    EXPECT_EQ(run.out.size(), 48u * 32u);
    EXPECT_NE(run.err.find("indices on standard output, uint8 elements, dims=1x32x48"), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists("-"));
}

// A stream has no extension: gif: and png: choose the format outright.
TEST_F(QuantizeCommand, PrefixesChooseTheFormatOfAnOutput) {
    const std::string in = picture(3);
    const ProgramRun gif = quantize(in, {"-o", "gif:-", "--colors", "8"});
    ASSERT_EQ(gif.status, 0) << gif.err;
    EXPECT_EQ(gif.out.substr(0, 6), "GIF89a");
    ASSERT_EQ(quantize(in, {"-o", "GIF:" + path("q.png"), "--colors", "8"}).status, 0);
    ASSERT_EQ(quantize(in, {"-o", "png:" + path("q.gif"), "--colors", "8"}).status, 0);
    EXPECT_EQ(fileContents(path("q.png")).substr(0, 6), "GIF89a");
    EXPECT_EQ(fileContents(path("q.gif")).substr(1, 3), "PNG");
    EXPECT_EQ(readTestPng(path("q.gif")).colors().size(), 8u);
}

TEST_F(QuantizeCommand, AnImageOfFewColoursComesBackAsItIs) {
    const std::string in = writeTestPng(path("two.png"), 6, 6, 3, 8, [](int i, int k) { return i % 2 ? 250 : k * 9; });
    const ProgramRun run = quantize(in, {"-o", path("q.gif"), "--colors", "4"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("2 colours (already no more than --colors"), std::string::npos) << run.err;
    ASSERT_EQ(runTool({"frames", path("q.gif"), "-o", path("back")}).status, 0);
    EXPECT_EQ(readTestPng(path("back/frame-001.png")).samples, readTestPng(in).samples);
    // Asking for the indices changes nothing of that.
    const ProgramRun indexed = quantize(in, {"-o", path("q.png"), "--colors", "4", "--indices-out", path("i.png")});
    ASSERT_EQ(indexed.status, 0) << indexed.err;
    EXPECT_NE(indexed.err.find("2 colours (already no more than --colors"), std::string::npos) << indexed.err;
    EXPECT_EQ(readTestPng(path("q.png")).samples, readTestPng(in).samples);
    EXPECT_EQ(readTestPng(path("i.png")).colors().size(), 2u);
    const ProgramRun quiet = quantize(in, {"-o", path("q.png"), "-q"});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err, "");
}

TEST_F(QuantizeCommand, RefusalsOfTheCommandLine) {
    const std::string in = picture(3);
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"quantize", in}, "give an output file with -o"},
        {{"quantize", in, "-o", path("q.png"), "--colors", "0"}, "--colors needs a whole number from 1 to 65536"},
        {{"quantize", in, "-o", path("q.png"), "--colors", "12x"}, "not '12x'"},
        {{"quantize", in, "-o", path("q.png"), "--bits", "9"}, "--bits needs a whole number from 2 to 8"},
        {{"quantize", in, "-o", path("q.png"), "--method", "kmeans"}, "--method is median-cut, wu, octree"},
        {{"quantize", in, "-o", path("q.png"), "--dither", "fs"}, "--dither is none, floyd-steinberg"},
        {{"quantize", in, "-o", path("q.png"), "--colors", "4", "--colors", "8"}, "--colors is given more than once"},
        {{"quantize", in, in, "-o", path("q.png")}, "quantize: give one input image, not 2"},
        {{"quantize", in, "-o", "-", "--palette-out", "-"}, "only one of -o, --palette-out and --indices-out can be -"},
        {{"quantize", in, "-o", path("q.png"), "--palette-out", "-", "--indices-out", "-"}, "can be - (standard output)"},
        {{"quantize", in, "-o", "gif:-", "--indices-out", "-"}, "can be - (standard output)"},
        {{"colors", in, "--json"}, "colors: unknown option --json"},
        {{"colors"}, "colors: give one image"},
    };
    for (const auto &[args, message] : cases) expectToolMessage(runTool(args), 2, message);
}

TEST_F(QuantizeCommand, RealImagesTravelAsRawSampleFiles) {
    std::vector<float> samples;
    for (int i = 0; i < 12 * 3; ++i) samples.push_back(float(i % 7) / 7.0f);
    std::ofstream(path("in.raw"), std::ios::binary)
        .write(reinterpret_cast<const char *>(samples.data()), std::streamsize(samples.size() * sizeof(float)));
    const std::string layout = "type=real32,width=4,height=3,channels=3";
    const ProgramRun run = quantize(path("in.raw"), {"--layout", layout, "-o", path("out.raw"), "--colors", "3"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find(layout), std::string::npos) << run.out;
    EXPECT_EQ(fileContents(path("out.raw")).size(), samples.size() * sizeof(float));
    const ProgramRun count = runTool({"colors", path("out.raw"), "--layout", layout});
    EXPECT_EQ(count.status, 0) << count.err;
    EXPECT_LE(std::stoll(count.out), 3);
}
