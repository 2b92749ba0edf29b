#include <cstring>
#include <string>

#include "Command.h"
#include "HostTable.h"
#include "ImageOutput.h"
#include "Options.h"
#include "SamplePicture.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kSampleImageHelp[] = R"(usage: tarvex sample-image [-o] OUT.png [--width W] [--height H]

Writes a photo-like RGB test picture (sky, sun, shaded balls, grain),
the same for the same size on every run. Default size 640 x 480.
)";

constexpr std::int64_t kLargestSide = 16384;

const std::vector<OptionRule> kSampleImageOptions{
    {"--output", "-o", true}, {"--width", {}, true}, {"--height", {}, true}};

std::int64_t side(const ParsedOptions &parsed, std::string_view option, std::int64_t fallback) {
    const auto text = parsed.value(option);
    return text ? wholeNumberOption("sample-image", option, *text, 1, kLargestSide) : fallback;
}

int runSampleImage(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("sample-image", args, kSampleImageOptions);
    const std::string output = outputFile("sample-image", parsed);
    imageFormatFor("sample-image", output);
    const std::int64_t width = side(parsed, "--width", 640), height = side(parsed, "--height", 480);
    const auto samples =
        tarvex_sample::samplePicture(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    MImage image = nullptr;
    if (rh_image_new(0, width, height, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image) != 0)
        throw CliError("the host cannot make a " + std::to_string(width) + " x " + std::to_string(height) + " image");
    const rh::Image owned(image);
    std::memcpy(hostTable()->imageFunctions->getRawData(image), samples.data(), samples.size());
    writeImage(image, output);
    return 0;
}

const RegisterCommand registered{
    {"sample-image", "write a photo-like RGB test picture as PNG", kSampleImageHelp, &runSampleImage}};

}  // namespace
}  // namespace tarvex_cli
