#include "Support.h"

#include <cstring>

#include "HostTable.h"
#include "ImageFiles.h"
#include "refhost/refhost.hpp"

using namespace tarvex_cli;

rh::Image testImage(int width, int height, int channels, int bits, const SampleOf &sample, bool alpha) {
    MImage image = nullptr;
    EXPECT_EQ(rh_image_new(0, width, height, channels, bits == 16 ? MImage_Type_Bit16 : MImage_Type_Bit8,
                           channels <= 2 ? MImage_CS_Gray : MImage_CS_RGB, true, alpha, &image),
              0);
    rh::Image owned(image);
    void *data = hostTable()->imageFunctions->getRawData(image);
    for (int i = 0; i < width * height; ++i)
        for (int k = 0; k < channels; ++k) {
            const std::size_t at = std::size_t(i) * channels + k;
            if (bits == 16) static_cast<std::uint16_t *>(data)[at] = sample(i, k);
            else static_cast<std::uint8_t *>(data)[at] = static_cast<std::uint8_t>(sample(i, k));
        }
    return owned;
}

std::string writeTestPng(const std::string &path, int width, int height, int channels, int bits,
                         const SampleOf &sample, bool alpha) {
    writePng(testImage(width, height, channels, bits, sample, alpha).get(), 0, path);
    return path;
}

void expectToolMessage(const tarvex_test::ProgramRun &run, int status, const std::string &message) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.err.rfind("tarvex: ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err << "is not one line";
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err << " lacks " << message;
}

PngSamples readTestPng(const std::string &path) {
    const rh::Image image(readPng(path));
    const QuorbelImageFunctions f = hostTable()->imageFunctions;
    PngSamples png;
    png.bits = f->getDataType(image.get()) == MImage_Type_Bit16 ? 16 : 8;
    png.channels = int(f->getChannels(image.get()));
    png.width = int(f->getColumnCount(image.get()));
    png.height = int(f->getRowCount(image.get()));
    const std::size_t count = std::size_t(png.width) * png.height * png.channels;
    const void *data = f->getRawData(image.get());
    for (std::size_t i = 0; i < count; ++i)
        png.samples.push_back(png.bits == 16 ? static_cast<const std::uint16_t *>(data)[i]
                                             : static_cast<const std::uint8_t *>(data)[i]);
    return png;
}

std::set<std::vector<std::uint16_t>> PngSamples::colors() const {
    std::set<std::vector<std::uint16_t>> distinct;
    for (auto at = samples.begin(); at != samples.end(); at += channels) distinct.emplace(at, at + channels);
    return distinct;
}
