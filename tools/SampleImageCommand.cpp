#include <cstring>
#include <string>

#include "Command.h"
#include "DitherSampleImage.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "NumberText.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kSampleImageHelp[] = R"(usage: tarvex sample-image OUT.png [--width W] [--height H]

Writes a photo-like RGB test picture (sky, sun, shaded balls, grain),
the same for the same size on every run. Default size 640 x 480.
)";

constexpr std::int64_t kLargestSide = 16384;

std::int64_t sideOption(const std::string &name, const std::string &text) {
    const auto value = parseInt64(text);
    if (!value || *value < 1 || *value > kLargestSide)
        throw usageError("sample-image: " + name + " is a whole number from 1 to " + std::to_string(kLargestSide));
    return *value;
}

int runSampleImage(const std::vector<std::string> &args) {
    std::string output;
    std::int64_t width = 640, height = 480;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &word = args[i];
        if (word == "--width" || word == "--height") {
            if (i + 1 >= args.size()) throw usageError("sample-image: " + word + " needs a value");
            (word == "--width" ? width : height) = sideOption(word, args[++i]);
        } else if (word.starts_with("-")) {
            throw usageError("sample-image: unknown option " + word);
        } else if (output.empty()) {
            output = word;
        } else {
            throw usageError("sample-image: one output file only");
        }
    }
    if (output.empty()) throw usageError("sample-image: give an output file");
    const auto samples =
        tarvex_sample::samplePicture(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    MImage image = nullptr;
    if (rh_image_new(0, width, height, 3, MImage_Type_Bit8, MImage_CS_RGB, 1, 0, &image) != 0)
        throw CliError("the host cannot make a " + std::to_string(width) + " x " + std::to_string(height) + " image");
    const rh::Image owned(image);
    std::memcpy(hostTable()->imageFunctions->getRawData(image), samples.data(), samples.size());
    writePng(image, 0, output);
    return 0;
}

const RegisterCommand registered{
    {"sample-image", "write a photo-like RGB test picture as PNG", kSampleImageHelp, &runSampleImage}};

}  // namespace
}  // namespace tarvex_cli
