#include "gif_import/LinkWriter.h"

#include <iterator>

#include <utf8.h>

namespace GifImport {

void LinkWriter::check(int status) {
    if (status == 0) throw LinkWriteFailed();
}

void LinkWriter::function(const char *head, int argumentCount) {
    check(ZvPutFunction(link_, head, argumentCount));
}

void LinkWriter::symbol(const char *name) { check(ZvPutSymbol(link_, name)); }

void LinkWriter::string(const char *text) { check(ZvPutString(link_, text)); }

void LinkWriter::utf8(const std::string &bytes) {
    std::string valid;
    utf8::replace_invalid(bytes.begin(), bytes.end(), std::back_inserter(valid));
    check(ZvPutUTF8String(link_, reinterpret_cast<const unsigned char *>(valid.data()),
                          static_cast<int>(valid.size())));
}

void LinkWriter::integer(std::int64_t value) { check(ZvPutInteger64(link_, value)); }

void LinkWriter::real(double value) { check(ZvPutReal64(link_, value)); }

void LinkWriter::byteArray(std::span<const std::uint8_t> data,
                           const std::vector<int> &dimensions) {
    check(ZvPutInteger8Array(link_, data.data(), dimensions.data(), nullptr,
                             static_cast<int>(dimensions.size())));
}

void LinkWriter::rule(const char *key) {
    function("Rule", 2);
    string(key);
}

void LinkWriter::rgbColor(PackedColor color) {
    function("RGBColor", 3);
    real(red(color) / 255.0);
    real(green(color) / 255.0);
    real(blue(color) / 255.0);
}

}  // namespace GifImport
