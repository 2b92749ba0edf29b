// Calling the two GIF exports in the reference host, and reading what they
// wrote back with giflib.
#pragma once

#include <gif_lib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Plugin.h"
#include "RawGif.h"
#include "TestPictures.h"
#include "refhost/refhost.hpp"

namespace export_test {

using gif_test::Rgb;

// A tensor argument: integers or reals, rank 1 unless dimensions are given.
struct TensorArgument {
    MTensor_Data_Type type = MTensor_Type_Integer;
    std::vector<double> values;
    std::vector<mint> dimensions;  // empty: one dimension of values.size()
};
TensorArgument ints(std::vector<double> values, std::vector<mint> dimensions = {});
TensorArgument reals(std::vector<double> values, std::vector<mint> dimensions = {});

// Every argument after the pixels, with defaults that pass every check.
struct WriteOptions {
    std::string file;
    std::string comments;
    TensorArgument durations = reals({0.1});
    std::string dither = "None";
    mint loops = 0;
    bool interlace = false;
    TensorArgument background = ints({});
    TensorArgument transparency = ints({});
    TensorArgument disposals = ints({0});
};

struct WriteResult {
    int code = 0;
    bool written = false;
    std::string fileName;
};

// `argc` other than the export's own count reaches the count check.
WriteResult writeFrames(MImage frames, const WriteOptions &options, mint argc = 10);
WriteResult writeColormaps(MRawArray maps, MRawArray indices, const WriteOptions &options,
                           mint argc = 11);

// A host image of 8-bit samples, slices of height x width x channels.
rh::Image byteImage(mint slices, mint width, mint height, mint channels,
                    const std::vector<std::uint8_t> &samples,
                    MImage_CS_Type colorSpace = MImage_CS_Automatic);
rh::RawArray byteArray(const std::vector<mint> &dimensions, const std::vector<std::uint8_t> &bytes);
std::vector<std::uint8_t> colorBytes(const std::vector<Rgb> &colors);

// A scratch file name for this test binary; the file is removed first.
std::string outputPath(const std::string &name);
bool fileExists(const std::string &path);
std::vector<std::uint8_t> fileBytes(const std::string &path);

struct DecodedImage {
    int width = 0, height = 0;
    bool interlaced = false;
    std::vector<Rgb> localMap;
    std::vector<std::uint8_t> indices;  // image order
    std::optional<GraphicsControlBlock> control;
};

struct DecodedGif {
    std::string version;  // "GIF89a"
    int width = 0, height = 0, background = 0;
    std::vector<Rgb> globalMap;
    std::vector<DecodedImage> images;
    std::vector<std::string> comments;
    std::vector<std::vector<std::uint8_t>> loopBlocks;  // the data after NETSCAPE2.0
    // The colour of pixel i of image k through the map it uses.
    Rgb color(std::size_t k, std::size_t i) const;
};

// Decodes with giflib's own reader; fails the test when giflib cannot.
DecodedGif decodeGif(const std::string &path);

}  // namespace export_test
