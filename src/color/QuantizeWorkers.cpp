#include "color/QuantizeWorkers.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include "color/MakeQuantizer.h"
#include "color/UniqueColors.h"
#include "dither/MakeDitherer.h"
#include "host/ImageDispatch.h"
#include "host/MemoryBudget.h"
#include "host/RawArray.h"

namespace Quant {

namespace {

using OstrelUtils::Image;
using OstrelUtils::ImageGeometry;
using OstrelUtils::MArgumentManager;
using OstrelUtils::RawArray;

std::int64_t positiveColorCount(const MArgumentManager &arguments) {
    const std::int64_t colorCount = arguments.getInteger(1);
    if (colorCount < 1) throw std::runtime_error("Color map length must be positive");
    return colorCount;
}

std::uint64_t pixelCountOf(const ImageGeometry &geometry) {
    return static_cast<std::uint64_t>(geometry.slices) * static_cast<std::uint64_t>(geometry.rows) *
           static_cast<std::uint64_t>(geometry.columns);
}

// Maps every slice of the image with the ditherer; Out is the image's type
// for colours, an unsigned index type for indices.
template <typename T, int N, typename Out>
void mapSlices(ColorUtilities::Ditherer<T, N> &ditherer, const T *input, Out *output,
               const ImageGeometry &geometry, bool writeColours) {
    const std::size_t slicePixels = static_cast<std::size_t>(geometry.rows) * geometry.columns;
    const std::size_t outputPerPixel = writeColours ? N + 1 : 1;
    for (std::int64_t s = 0; s < geometry.slices; ++s) {
        ditherer.setPixels(input + static_cast<std::size_t>(s) * slicePixels * (N + 1));
        ditherer.ditherSlice(output + static_cast<std::size_t>(s) * slicePixels * outputPerPixel,
                             writeColours);
    }
}

// Maps the image to the palette the quantizer just made, with its cell cache.
template <typename T, int N>
std::unique_ptr<ColorUtilities::Ditherer<T, N>> dithererFor(const std::string &method,
                                                            const Quantizer<T, N> &quantizer,
                                                            const ImageGeometry &geometry) {
    return ColorUtilities::makeDitherer<T, N>(method, quantizer,
                                              static_cast<std::uint32_t>(geometry.rows),
                                              static_cast<std::uint32_t>(geometry.columns), true, false);
}

struct GetQuantizedImageWorker {
    MArgumentManager &arguments;

    template <typename T, int N>
    void operator()(Image<T> &image, const ImageGeometry &geometry) {
        const std::int64_t colorCount = positiveColorCount(arguments);
        const auto perSlice = static_cast<std::uint32_t>(geometry.rows * geometry.columns);
        // Images with no more colours than asked for come back as they are.
        if (colorCount >= static_cast<std::int64_t>(perSlice) * geometry.slices ||
            countUniqueColors<T, N>(image.data(), pixelCountOf(geometry),
                                    static_cast<std::uint64_t>(colorCount), false) <=
                static_cast<std::uint64_t>(colorCount)) {
            arguments.setImage(image);
            return;
        }
        Image<T> result(image.is3D() ? geometry.slices : 0, geometry.columns, geometry.rows, N + 1,
                        image.colorSpace(), true);
        auto quantizer = makeQuantizer<T, N>(
            arguments.getInteger(3), static_cast<std::uint32_t>(geometry.slices * perSlice),
            image.data(), static_cast<std::uint32_t>(colorCount), arguments.getInteger(4));
        quantizer->quantize();
        auto ditherer = dithererFor(arguments.getString(2), *quantizer, geometry);
        mapSlices(*ditherer, image.data(), result.data(), geometry, true);
        arguments.setImage(result);
    }
};

// Rows past the method's last colour repeat it; with no colour they stay zero.
template <typename T, int N>
void setPaletteRows(MArgumentManager &arguments, const ColorUtilities::Palette<T, N> &palette,
                    std::int64_t colorCount) {
    RawArray<T> rows({colorCount, N + 1});
    rows.fill(T{0});
    T *out = rows.data();
    for (std::int64_t i = 0; i < colorCount && palette.size() > 0; ++i) {
        const auto &color =
            palette.colors[std::min<std::size_t>(static_cast<std::size_t>(i), palette.size() - 1)];
        for (int k = 0; k <= N; ++k) out[i * (N + 1) + k] = color[k];
    }
    arguments.setRawArray(rows);
}

template <typename Index, typename T, int N>
void setIndexArray(MArgumentManager &arguments, ColorUtilities::Ditherer<T, N> &ditherer,
                   const Image<T> &image, const ImageGeometry &geometry) {
    RawArray<Index> indices({geometry.slices, geometry.rows, geometry.columns});
    indices.fill(Index{0});
    mapSlices(ditherer, image.data(), indices.data(), geometry, false);
    arguments.setRawArray(indices);
}

// The narrowest unsigned type that holds every index below colorCount.
template <typename T, int N>
void setIndices(MArgumentManager &arguments, ColorUtilities::Ditherer<T, N> &ditherer,
                const Image<T> &image, const ImageGeometry &geometry, std::int64_t colorCount) {
    if (colorCount <= 256)
        setIndexArray<unsigned char>(arguments, ditherer, image, geometry);
    else if (colorCount <= 65536)
        setIndexArray<unsigned short>(arguments, ditherer, image, geometry);
    else if (colorCount <= std::int64_t{1} << 32)
        setIndexArray<unsigned int>(arguments, ditherer, image, geometry);
    else
        setIndexArray<std::uint64_t>(arguments, ditherer, image, geometry);
}

struct ImageQuantizeWorker {
    MArgumentManager &arguments;

    template <typename T, int N>
    void operator()(Image<T> &image, const ImageGeometry &geometry) {
        const std::int64_t colorCount = positiveColorCount(arguments);
        const bool paletteOnly = arguments.getBoolean(3);
        // The palette has a row for every colour asked for, found or not.
        if (paletteOnly)
            OstrelUtils::requireTableBytes(
                OstrelUtils::saturatedProduct(static_cast<std::uint64_t>(colorCount), (N + 1) * sizeof(T)));
        const std::int64_t bits = arguments.getInteger(5);
        auto quantizer = makeQuantizer<T, N>(arguments.getInteger(4),
                                             static_cast<std::uint32_t>(pixelCountOf(geometry)),
                                             image.data(), static_cast<std::uint32_t>(colorCount), bits);
        quantizer->quantize();
        if (paletteOnly) {
            setPaletteRows(arguments, *quantizer->palette(), colorCount);
            return;
        }
        auto ditherer = dithererFor(arguments.getString(2), *quantizer, geometry);
        setIndices(arguments, *ditherer, image, geometry, colorCount);
    }
};

struct UniqueColorsWorker {
    MArgumentManager &arguments;

    template <typename T, int N>
    void operator()(Image<T> &image, const ImageGeometry &geometry) {
        constexpr auto kNoLimit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        const std::uint64_t count =
            countUniqueColors<T, N>(image.data(), pixelCountOf(geometry), kNoLimit, arguments.getBoolean(1));
        arguments.setInteger(static_cast<mint>(count));
    }
};

}  // namespace

void imageQuantize(MArgumentManager &arguments) {
    OstrelUtils::dispatchImage(arguments, ImageQuantizeWorker{arguments});
}

void getQuantizedImage(MArgumentManager &arguments) {
    OstrelUtils::dispatchImage(arguments, GetQuantizedImageWorker{arguments});
}

void uniqueColors(MArgumentManager &arguments) {
    OstrelUtils::dispatchImage(arguments, UniqueColorsWorker{arguments});
}

}  // namespace Quant
