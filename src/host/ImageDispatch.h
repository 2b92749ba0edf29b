#pragma once

#include <stdexcept>
#include <string>

#include "host/ImageGeometry.h"
#include "host/MArgumentManager.h"

namespace OstrelUtils {

// Picks the instantiation for the image in argument 0 once, at the entry
// point, so that no pixel loop ever branches on the element type or channel
// count. The worker is a generic callable invoked as
//   worker.template operator()<T, N>(image, geometry)
// with N the channel count minus one.
template <typename T, typename Worker>
decltype(auto) dispatchChannels(MArgumentManager &arguments, Worker &&worker) {
    Image<T> image = arguments.getImage<T>(0);
    const ImageGeometry geometry = checkGeometry(image);
    const mint channels = image.channels();
    switch (channels) {
        case 1: return worker.template operator()<T, 0>(image, geometry);
        case 2: return worker.template operator()<T, 1>(image, geometry);
        case 3: return worker.template operator()<T, 2>(image, geometry);
        case 4: return worker.template operator()<T, 3>(image, geometry);
        default:
            throw std::runtime_error("Unsupported number of channels: " + std::to_string(channels));
    }
}

template <typename Worker>
decltype(auto) dispatchImage(MArgumentManager &arguments, Worker &&worker) {
    switch (arguments.getImageDataType(0)) {
        case MImage_Type_Bit: return dispatchChannels<signed char>(arguments, worker);
        case MImage_Type_Bit8: return dispatchChannels<unsigned char>(arguments, worker);
        case MImage_Type_Bit16: return dispatchChannels<unsigned short>(arguments, worker);
        case MImage_Type_Real32: return dispatchChannels<float>(arguments, worker);
        case MImage_Type_Real64: return dispatchChannels<double>(arguments, worker);
        default:
            throw OstrelError(ImageArgumentTypeError,
                              "Incorrect type of Image argument. Argument index: 0");
    }
}

}  // namespace OstrelUtils
