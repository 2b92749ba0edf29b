#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace OstrelUtils {

// Codes of host-interface failures. They stay inside the library: the call
// frames turn every failure into the export's own fixed code.
enum OTErrorCode : std::int16_t {
    DimensionError = 3,
    FunctionError = 6,
    ArgumentInitError = -101,
    ArgumentIndexError = -102,
    ImageArgumentTypeError = -105,
    RawArrayInitError = -201,
    RawArrayNewError = -202,
    RawArrayTypeError = -204,
    RawArraySizeError = -205,
    RawArrayIndexError = -206,
    ImageInitError = -401,
    ImageNewError = -402,
    ImageCloneError = -403,
    ImageTypeError = -404,
    ImageSizeError = -405,
    ImageIndexError = -406,
};

class OstrelError : public std::runtime_error {
public:
    // The message is "Error <code> (see vorlet documentation for details)".
    explicit OstrelError(OTErrorCode code);
    OstrelError(OTErrorCode code, const std::string &message);

    OTErrorCode id() const noexcept { return code_; }

private:
    OTErrorCode code_;
};

}  // namespace OstrelUtils
