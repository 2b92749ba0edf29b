#include "gif_export/ColorReducer.h"

namespace GifExport {

ColorMapOwner reduceColors(const std::uint8_t *rgb, std::uint32_t height, std::uint32_t width,
                           std::uint8_t *indices, const ReduceSettings &settings) {
    return reduceColorsWith<ExportOctree>(rgb, height, width, indices, settings);
}

}  // namespace GifExport
