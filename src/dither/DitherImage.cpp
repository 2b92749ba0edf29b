#include "dither/DitherImage.h"

#include <cstddef>
#include <cstdint>

#include "color/Palette.h"
#include "dither/MakeDitherer.h"
#include "host/ImageDispatch.h"

namespace ColorUtilities {

namespace {

struct DitherWorker {
    OstrelUtils::MArgumentManager &arguments;

    template <typename T, int N>
    void operator()(OstrelUtils::Image<T> &image, const OstrelUtils::ImageGeometry &geometry) {
        const auto rows = static_cast<std::uint32_t>(geometry.rows);
        const auto cols = static_cast<std::uint32_t>(geometry.columns);
        OstrelUtils::Image<T> result(image.is3D() ? geometry.slices : 0, geometry.columns,
                                     geometry.rows, N + 1, image.colorSpace(), true);
        SharedPalette<T, N> palette = fromColorMap<T, N>(arguments.getRawArray<T>(1));
        const std::string &method = arguments.getString(2);
        const bool cacheFlag = arguments.getBoolean(3);
        const bool sortedFlag = arguments.getBoolean(4);
        auto ditherer = makeDitherer<T, N>(method, palette, rows, cols, cacheFlag, sortedFlag);

        const std::size_t slicePixels = std::size_t{rows} * cols;
        const std::size_t sliceSamples = slicePixels * (N + 1);
        for (std::int64_t s = 0; s < geometry.slices; ++s) {
            const T *input = image.data() + static_cast<std::size_t>(s) * sliceSamples;
            ditherer->setPixels(input);
            ditherer->bounds().fillForSlice(ditherer->bits(), input, slicePixels);
            ditherer->ditherSlice(result.data() + static_cast<std::size_t>(s) * sliceSamples, true);
        }
        arguments.setImage(result);
    }
};

}  // namespace

void ditherImage(OstrelUtils::MArgumentManager &arguments) {
    OstrelUtils::dispatchImage(arguments, DitherWorker{arguments});
}

}  // namespace ColorUtilities
