#include "dither/DitherImage.h"

#include <stdexcept>

#include "host/ImageDispatch.h"

namespace ColorUtilities {

void ditherImage(OstrelUtils::MArgumentManager &arguments) {
    OstrelUtils::dispatchImage(arguments, []<typename T, int N>(auto &, const auto &) {
        throw std::runtime_error("DitherImage is not available yet");
    });
}

}  // namespace ColorUtilities
