#pragma once

#include <string>

#include "quorbel/QuorbelLibrary.h"

namespace GifImport {

// A string argument of an argument-vector export, given back to the kernel
// when the call ends, whatever its outcome.
class HostString {
public:
    HostString(QuorbelLibraryData library, MArgument argument)
        : library_(library), text_(MArgument_getUTF8String(argument)) {}
    ~HostString() {
        if (text_ != nullptr) library_->releaseUTF8String(text_);
    }
    HostString(const HostString &) = delete;
    HostString &operator=(const HostString &) = delete;

    std::string bytes() const { return text_ == nullptr ? std::string() : std::string(text_); }

private:
    QuorbelLibraryData library_;
    char *text_;
};

}  // namespace GifImport
