#include "host/OstrelError.h"

namespace OstrelUtils {

namespace {
std::string defaultMessage(OTErrorCode code) {
    return "Error " + std::to_string(static_cast<int>(code)) +
           " (see vorlet documentation for details)";
}
}  // namespace

OstrelError::OstrelError(OTErrorCode code) : std::runtime_error(defaultMessage(code)), code_(code) {}

OstrelError::OstrelError(OTErrorCode code, const std::string &message)
    : std::runtime_error(message), code_(code) {}

}  // namespace OstrelUtils
