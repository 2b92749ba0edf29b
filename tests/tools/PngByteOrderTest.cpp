// The tool's PNG files against a reading and a writing made without the PNG
// library: a byte-order mistake made in both directions cannot pass.
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "HostTable.h"
#include "ImageFiles.h"
#include "PlainPng.h"
#include "Support.h"
#include "refhost/refhost.hpp"

namespace {

using namespace tarvex_cli;
using tools_test::PlainPng;

constexpr std::uint32_t kWidth = 3, kHeight = 2;

struct Layout {
    mint channels;
    std::uint8_t colorType;
    int bitDepth;
};

std::ostream &operator<<(std::ostream &out, const Layout &layout) {
    return out << layout.channels << " channels of " << layout.bitDepth << " bits";
}

// Samples whose bytes all differ from their neighbours, so that swapped
// bytes, swapped channels or a shifted row all show.
std::uint16_t sampleValue(std::size_t k, int bitDepth) {
    const auto value = static_cast<std::uint16_t>(0x1234 + 0x0F1D * k);
    return bitDepth == 16 ? value : static_cast<std::uint16_t>(value & 0xFF);
}

std::size_t sampleCount(const Layout &layout) { return kWidth * kHeight * std::size_t(layout.channels); }

// What the file must hold: each sample big-endian.
std::vector<std::uint8_t> fileBytes(const Layout &layout) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t k = 0; k < sampleCount(layout); ++k) {
        const std::uint16_t value = sampleValue(k, layout.bitDepth);
        if (layout.bitDepth == 16) bytes.push_back(std::uint8_t(value >> 8));
        bytes.push_back(std::uint8_t(value));
    }
    return bytes;
}

rh::Image hostImage(const Layout &layout) {
    return testImage(kWidth, kHeight, int(layout.channels), layout.bitDepth,
                     [&](int i, int k) { return sampleValue(std::size_t(i) * layout.channels + k, layout.bitDepth); },
                     layout.channels % 2 == 0);
}

std::vector<std::uint8_t> samplesOf(MImage image) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const std::size_t bytes = std::size_t(images->getColumnCount(image) * images->getRowCount(image) *
                                          images->getChannels(image)) *
                              (images->getDataType(image) == MImage_Type_Bit16 ? 2 : 1);
    const auto *data = static_cast<const std::uint8_t *>(images->getRawData(image));
    return {data, data + bytes};
}

class PngByteOrder : public ScratchTest, public ::testing::WithParamInterface<Layout> {};

TEST_P(PngByteOrder, WrittenFilesHoldBigEndianSamples) {
    const Layout layout = GetParam();
    const rh::Image image = hostImage(layout);
    writePng(image.get(), 0, path("tool.png"));
    const PlainPng file = tools_test::readPlainPng(path("tool.png"));
    EXPECT_EQ(file.width, kWidth);
    EXPECT_EQ(file.height, kHeight);
    EXPECT_EQ(file.bitDepth, layout.bitDepth);
    EXPECT_EQ(file.colorType, layout.colorType);
    EXPECT_EQ(file.samples, fileBytes(layout));
}

TEST_P(PngByteOrder, ReadFilesGiveTheSamplesInHostOrder) {
    const Layout layout = GetParam();
    tools_test::writePlainPng({kWidth, kHeight, std::uint8_t(layout.bitDepth), layout.colorType, fileBytes(layout)},
                              path("plain.png"));
    const rh::Image read(readPng(path("plain.png")));
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    EXPECT_EQ(images->getDataType(read.get()), layout.bitDepth == 16 ? MImage_Type_Bit16 : MImage_Type_Bit8);
    EXPECT_EQ(images->getChannels(read.get()), layout.channels);
    EXPECT_EQ(samplesOf(read.get()), samplesOf(hostImage(layout).get()));
}

INSTANTIATE_TEST_SUITE_P(GreyRgbAndAlpha, PngByteOrder,
                         ::testing::Values(Layout{1, 0, 16}, Layout{2, 4, 16}, Layout{3, 2, 16}, Layout{4, 6, 16},
                                           Layout{3, 2, 8}, Layout{4, 6, 8}),
                         [](const ::testing::TestParamInfo<Layout> &info) {
                             return std::to_string(info.param.channels) + "Channels" +
                                    std::to_string(info.param.bitDepth) + "Bit";
                         });

}  // namespace
