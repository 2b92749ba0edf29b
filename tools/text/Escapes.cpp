#include "Escapes.h"

#include <stdexcept>

namespace tarvex_cli {
namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

char namedEscape(char c) {
    switch (c) {
    case '\\': return '\\';
    case '"': return '"';
    case '\'': return '\'';
    case 'a': return '\a';
    case 'b': return '\b';
    case 'e': return '\x1b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    default: return 0;
    }
}

// Decodes the escape that starts after the backslash at text[i]; advances i
// past it.
void decodeOne(std::string_view text, std::size_t &i, std::string &out) {
    if (i >= text.size()) throw std::invalid_argument("the text ends in a lone backslash");
    const char c = text[i];
    if (c == '|') {
        out += kListSeparator;
        ++i;
    } else if (char named = namedEscape(c)) {
        out += named;
        ++i;
    } else if (c == 'x') {
        int high = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) throw std::invalid_argument("\\x needs exactly two hex digits");
        if (high == 0 && low == 0) throw std::invalid_argument("a NUL byte (\\x00) cannot be passed in a string");
        out += static_cast<char>(high * 16 + low);
        i += 3;
    } else if (isOctal(c)) {
        int value = 0;
        std::size_t digits = 0;
        while (digits < 3 && i < text.size() && isOctal(text[i])) {
            value = value * 8 + (text[i++] - '0');
            ++digits;
        }
        if (value == 0) throw std::invalid_argument("a NUL byte (\\0) cannot be passed in a string");
        if (value > 255) throw std::invalid_argument("octal escape above \\377");
        out += static_cast<char>(value);
    } else {
        throw std::invalid_argument(std::string("unknown escape \\") + c);
    }
}

// Length of the valid UTF-8 sequence starting at s[i] (at least two bytes), or 0.
std::size_t utf8SequenceLength(std::string_view s, std::size_t i) {
    const auto lead = static_cast<unsigned char>(s[i]);
    std::size_t length = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length == 0 || lead > 0xF4 || i + length > s.size()) return 0;
    for (std::size_t k = 1; k < length; ++k)
        if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return 0;
    const auto second = static_cast<unsigned char>(s[i + 1]);
    // Overlong forms, surrogates and code points above U+10FFFF.
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second >= 0xA0) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second >= 0x90))
        return 0;
    return length;
}

void appendOctal(unsigned char byte, std::string &out) {
    out += '\\';
    out += static_cast<char>('0' + (byte >> 6));
    out += static_cast<char>('0' + ((byte >> 3) & 7));
    out += static_cast<char>('0' + (byte & 7));
}

}  // namespace

std::string decodeEscapes(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != '\\') {
            out += text[i++];
            continue;
        }
        ++i;
        decodeOne(text, i, out);
    }
    return out;
}

namespace {

// Escapes bytes that would act on a terminal or be ambiguous in text.
std::string escapeBytes(std::string_view bytes, bool escapeQuotes) {
    std::string out;
    for (std::size_t i = 0; i < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte >= 0x80) {
            std::size_t length = utf8SequenceLength(bytes, i);
            if (length == 0) {
                appendOctal(byte, out);
                ++i;
            } else {
                out.append(bytes.substr(i, length));
                i += length;
            }
            continue;
        }
        ++i;
        if ((byte == '"' && escapeQuotes) || byte == '\\') {
            out += '\\';
            out += static_cast<char>(byte);
        } else if (byte == '\n') {
            out += "\\n";
        } else if (byte == '\t') {
            out += "\\t";
        } else if (byte == '\r') {
            out += "\\r";
        } else if (byte < 0x20 || byte == 0x7f) {
            appendOctal(byte, out);
        } else {
            out += static_cast<char>(byte);
        }
    }
    return out;
}

}  // namespace

std::string quoteString(std::string_view bytes) { return '"' + escapeBytes(bytes, true) + '"'; }

std::string printableText(std::string_view bytes) { return escapeBytes(bytes, false); }

}  // namespace tarvex_cli
