#include "gif_export/ExportParameters.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <stdexcept>

namespace GifExport {
namespace {

using OstrelUtils::TensorView;

void require(bool condition, const std::string &failure) {
    if (!condition) throw std::runtime_error(failure);
}

// A vector with one value for every frame, or one value for all.
void requirePerFrameVector(const TensorView &values, std::uint32_t frames, const char *what) {
    const std::string name(what);
    const mint length = values.length();
    require(length == mint(frames) || length == 1, "Invalid length of " + name);
}

std::size_t perFrame(const TensorView &values, std::size_t frame) {
    return values.length() == 1 ? 0 : frame;
}

bool isChannelValue(mint value) { return static_cast<std::uint64_t>(value) < 256; }

GifColorType greyColor(mint level) {
    const auto v = static_cast<GifByteType>(level);
    return GifColorType{v, v, v};
}

// Row `row` of a transparency table of `width` columns, when it holds a colour.
std::optional<GifColorType> tableColor(const TensorView &table, mint row, mint width) {
    if (width != 1 && width != 3) return std::nullopt;
    mint value[3];
    for (mint c = 0; c < width; ++c) {
        value[c] = table.integerAt(row * width + c);
        if (!isChannelValue(value[c])) return std::nullopt;
    }
    if (width == 1) return greyColor(value[0]);
    return GifColorType{static_cast<GifByteType>(value[0]), static_cast<GifByteType>(value[1]),
                        static_cast<GifByteType>(value[2])};
}

void setFrameTransparency(ExportFrame &frame, const std::optional<GifColorType> &color) {
    if (color) {
        frame.transparentColor = *color;
        frame.transparentIndex = kTransparencyToResolve;
    } else {
        frame.transparentIndex = kNoTransparency;
    }
}

void setTransparencyTable(Encoder &encoder, const TensorView &table) {
    require(table.dimension(0) == mint(encoder.frameCount()),
            "Invalid dimensions of transparency vector");
    const mint width = table.dimension(1);
    for (std::size_t k = 0; k < encoder.frames().size(); ++k)
        setFrameTransparency(encoder.frames()[k], tableColor(table, mint(k), width));
}

void setTransparencyVector(Encoder &encoder, const TensorView &vector) {
    const mint length = vector.length();
    std::vector<ExportFrame> &frames = encoder.frames();
    if (length == 0) {
        for (ExportFrame &frame : frames) setFrameTransparency(frame, std::nullopt);
        return;
    }
    if ((length == 1 && encoder.channels() == 1) || (length == 3 && encoder.channels() == 3)) {
        const std::optional<GifColorType> color = tableColor(vector, 0, length);
        for (ExportFrame &frame : frames) setFrameTransparency(frame, color);
        return;
    }
    require(length == mint(encoder.frameCount()) && encoder.channels() == 1,
            "Invalid length of transparency vector");
    for (std::size_t k = 0; k < frames.size(); ++k)
        setFrameTransparency(frames[k], tableColor(vector, mint(k), 1));
}

}  // namespace

int hundredthsOf(double seconds) {
    const double hundredths = std::round(seconds * 100.0);
    if (!std::isfinite(hundredths) || std::fabs(hundredths) >= 9.0e18) return 0;
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::int64_t>(hundredths)));
}

void setDurations(Encoder &encoder, const TensorView &seconds) {
    requirePerFrameVector(seconds, encoder.frameCount(), "DisplayDurations vector");
    require(seconds.isReal(), "Invalid type of DisplayDurations vector");
    require(seconds.rank() == 1, "Invalid rank of DisplayDurations vector");
    const auto values = seconds.reals();
    for (std::size_t k = 0; k < encoder.frames().size(); ++k)
        encoder.frames()[k].delay = hundredthsOf(values[perFrame(seconds, k)]);
}

void setDitherMethod(Encoder &encoder, const std::string &method) {
    if (method == "FloydSteinberg")
        encoder.setDither(true);
    else if (method == "None")
        encoder.setDither(false);
    else
        throw std::runtime_error("Invalid dithering method");
}

void setLoopCount(Encoder &encoder, mint loops) {
    const auto plays = static_cast<std::uint32_t>(loops);
    if (plays > kMaxLoopCount)
        throw std::runtime_error("Number of loops should be between 0 and " +
                                 std::to_string(kMaxLoopCount));
    encoder.setLoopCount(plays);
}

void setBackground(Encoder &encoder, const TensorView &color) {
    const mint length = color.length();
    require(length == 0 || length == 1 || length == 3, "Invalid length of background color vector");
    require(color.rank() == 1, "Invalid rank of background color vector");
    require(color.isInteger(), "Invalid type of background color vector");
    if (length == 0) return;
    const auto values = color.integers();
    for (mint value : values)
        require(isChannelValue(value), "Out-of-range channel value in background color vector");
    encoder.setBackgroundColor(length == 1 ? greyColor(values[0])
                                           : GifColorType{static_cast<GifByteType>(values[0]),
                                                          static_cast<GifByteType>(values[1]),
                                                          static_cast<GifByteType>(values[2])});
}

// The element type is not checked: reals count as their integer part.
void setTransparency(Encoder &encoder, const TensorView &colors) {
    switch (colors.rank()) {
        case 2:
            setTransparencyTable(encoder, colors);
            break;
        case 1:
            setTransparencyVector(encoder, colors);
            break;
        default:
            throw std::runtime_error("Invalid rank of transparency vector");
    }
}

void setDisposals(Encoder &encoder, const TensorView &modes) {
    requirePerFrameVector(modes, encoder.frameCount(), "disposal mode vector");
    require(modes.rank() == 1, "Invalid rank of disposal mode vector");
    require(modes.isInteger(), "Invalid type of disposal mode vector");
    const auto values = modes.integers();
    for (mint value : values)
        require(static_cast<std::uint64_t>(value) <= DISPOSE_PREVIOUS,
                "Disposal mode value out of range");
    for (std::size_t k = 0; k < encoder.frames().size(); ++k)
        encoder.frames()[k].disposal = static_cast<int>(values[perFrame(modes, k)]);
}

void setColorMaps(Encoder &encoder, const OstrelUtils::RawArray<unsigned char> &maps) {
    const mint rank = maps.rank();
    require(rank == 2 || rank == 3, "Invalid rank of ColorMap parameter");
    require(maps.dimension(rank - 1) == 3, "Invalid color format in ColorMap parameter");
    const mint colors = maps.dimension(rank - 2);
    require(colors >= 2 && colors <= 256 && (colors & (colors - 1)) == 0,
            "Invalid length of input ColorMap");
    const auto *bytes = reinterpret_cast<const GifColorType *>(maps.data());
    const auto mapAt = [&](mint k) {
        return makeColorMap(static_cast<int>(colors),
                            {bytes + k * colors, static_cast<std::size_t>(colors)});
    };
    if (rank == 2 || maps.dimension(0) == 1) {
        encoder.setGlobalMap(mapAt(0));
        return;
    }
    require(maps.dimension(0) == mint(encoder.frameCount()),
            "Number of ColorMaps does not match number of frames");
    for (std::size_t k = 0; k < encoder.frames().size(); ++k)
        encoder.frames()[k].ownMap(mapAt(mint(k)));
}

}  // namespace GifExport
