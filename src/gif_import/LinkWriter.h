#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <span>
#include <vector>

#include "gif_import/PackedColor.h"
#include "quorbel/zvlink.h"

namespace GifImport {

struct LinkWriteFailed : std::runtime_error {
    LinkWriteFailed() : std::runtime_error("link write failed") {}
};

// Writes an expression token by token; every failed put throws
// LinkWriteFailed, leaving the packet half written.
class LinkWriter {
public:
    explicit LinkWriter(ZvLINK link) : link_(link) {}

    void function(const char *head, int argumentCount);
    void symbol(const char *name);
    void string(const char *text);
    // Bytes from a file, with every invalid UTF-8 sequence replaced by U+FFFD.
    void utf8(const std::string &bytes);
    void integer(std::int64_t value);
    void real(double value);
    void byteArray(std::span<const std::uint8_t> data, const std::vector<int> &dimensions);

    // Rule["key", ...]: the value follows.
    void rule(const char *key);
    void rgbColor(PackedColor color);

private:
    static void check(int status);
    ZvLINK link_;
};

}  // namespace GifImport
