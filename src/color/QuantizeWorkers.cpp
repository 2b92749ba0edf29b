#include "color/QuantizeWorkers.h"

#include <stdexcept>

#include "host/ImageDispatch.h"

namespace Quant {

namespace {
// The quantizers are not built yet. The image argument is still unpacked and
// checked, so that every refusal of the argument layer already answers with
// the export's own code.
void refuseAfterDispatch(OstrelUtils::MArgumentManager &arguments, const char *exportName) {
    OstrelUtils::dispatchImage(arguments, [&]<typename T, int N>(auto &, const auto &) {
        throw std::runtime_error(std::string(exportName) + " is not available yet");
    });
}
}  // namespace

void imageQuantize(OstrelUtils::MArgumentManager &arguments) {
    refuseAfterDispatch(arguments, "ImageQuantize");
}

void getQuantizedImage(OstrelUtils::MArgumentManager &arguments) {
    refuseAfterDispatch(arguments, "GetQuantizedImage");
}

void uniqueColors(OstrelUtils::MArgumentManager &arguments) {
    refuseAfterDispatch(arguments, "UniqueColors");
}

}  // namespace Quant
