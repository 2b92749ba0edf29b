#pragma once

#include <stdexcept>
#include <string>

namespace GifExport {

// A failure of the GIF writer that carries the status the export returns.
class ExportError : public std::runtime_error {
public:
    explicit ExportError(signed char status, const std::string &message = "")
        : std::runtime_error(message), status_(status) {}

    signed char status() const noexcept { return status_; }

private:
    signed char status_;
};

}  // namespace GifExport
