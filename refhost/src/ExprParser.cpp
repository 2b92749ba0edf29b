// Parser of the input form: atoms, Head[...], {...}, (...) and a -> b.

#include <cctype>
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include "Expr.h"

namespace refhost {
namespace {

struct SyntaxError {
    std::size_t position;
    std::string reason;
};

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    ExprPtr parseAll() {
        ExprPtr expr = parseExpression();
        skipSpace();
        if (pos_ != text_.size()) fail("unexpected text after the expression");
        return expr;
    }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
    int depth_ = 0;

    [[noreturn]] void fail(std::string reason) const { throw SyntaxError{pos_, std::move(reason)}; }

    bool atEnd() const { return pos_ >= text_.size(); }
    char peek(std::size_t ahead = 0) const {
        return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0';
    }
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

    void skipSpace() {
        while (!atEnd() && std::isspace(static_cast<unsigned char>(peek()))) ++pos_;
    }

    bool accept(std::string_view token) {
        skipSpace();
        if (text_.substr(pos_, token.size()) != token) return false;
        pos_ += token.size();
        return true;
    }

    void expect(char c) {
        if (!accept(std::string_view(&c, 1))) fail(std::string("expected '") + c + "'");
    }

    ExprPtr parseExpression() {
        if (++depth_ > maxExprDepth) fail("nesting too deep");
        ExprPtr left = parsePrimary();
        if (accept("->")) {
            std::vector<ExprPtr> parts;
            parts.push_back(std::move(left));
            parts.push_back(parseExpression());
            left = makeNormal("Rule", std::move(parts));
        }
        --depth_;
        return left;
    }

    ExprPtr parsePrimary() {
        skipSpace();
        const char c = peek();
        if (c == '"') return parseString();
        if (isDigit(c) || (c == '-' && isDigit(peek(1)))) return parseNumber();
        if (isLetter(c) || c == '$') return parseSymbolOrNormal();
        if (accept("{")) return makeNormal("List", parseArguments('}'));
        if (accept("(")) {
            ExprPtr inner = parseExpression();
            expect(')');
            return inner;
        }
        fail(atEnd() ? "unexpected end of input" : "unexpected character");
    }

    std::vector<ExprPtr> parseArguments(char close) {
        std::vector<ExprPtr> parts;
        if (accept(std::string_view(&close, 1))) return parts;
        do parts.push_back(parseExpression());
        while (accept(","));
        expect(close);
        return parts;
    }

    ExprPtr parseSymbolOrNormal() {
        const std::size_t start = pos_;
        while (isLetter(peek()) || isDigit(peek()) || peek() == '$') ++pos_;
        std::string name(text_.substr(start, pos_ - start));
        if (accept("[")) return makeNormal(std::move(name), parseArguments(']'));
        return makeSymbol(std::move(name));
    }

    void skipDigits() {
        while (isDigit(peek())) ++pos_;
    }

    // "2e" is not a real: an exponent needs digits.
    bool acceptExponent() {
        if (peek() != 'e' && peek() != 'E') return false;
        const std::size_t sign = (peek(1) == '+' || peek(1) == '-') ? 1 : 0;
        if (!isDigit(peek(1 + sign))) return false;
        pos_ += 1 + sign;
        skipDigits();
        return true;
    }

    ExprPtr parseNumber() {
        const std::size_t start = pos_;
        if (peek() == '-') ++pos_;
        skipDigits();
        bool real = false;
        if (peek() == '.') {
            real = true;
            ++pos_;
            skipDigits();
        }
        if (acceptExponent()) real = true;
        const char *first = text_.data() + start;
        const char *last = text_.data() + pos_;
        if (real) {
            double value = 0;
            if (std::from_chars(first, last, value).ec != std::errc()) fail("real out of range");
            return makeReal(value);
        }
        long long value = 0;
        if (std::from_chars(first, last, value).ec != std::errc()) fail("integer out of range");
        return makeInteger(value);
    }

    ExprPtr parseString() {
        ++pos_;
        std::string bytes;
        while (true) {
            if (atEnd()) fail("unterminated string");
            const char c = text_[pos_++];
            if (c == '"') return makeString(std::move(bytes));
            bytes += c == '\\' ? parseEscape() : c;
        }
    }

    char parseEscape() {
        const char c = peek();
        ++pos_;
        switch (c) {
        case '"': return '"';
        case '\\': return '\\';
        case 'n': return '\n';
        case 't': return '\t';
        case 'r': return '\r';
        default: break;
        }
        --pos_;
        int value = 0;
        for (int i = 0; i < 3; ++i, ++pos_) {
            if (peek() < '0' || peek() > '7') fail("invalid escape");
            value = value * 8 + (peek() - '0');
        }
        if (value > 0xFF) fail("invalid escape");
        return static_cast<char>(value);
    }
};

}  // namespace
}  // namespace refhost

extern "C" RhExpr *rh_expr_parse(const char *text, char *error, size_t errorSize) {
    if (text == nullptr) {
        if (error != nullptr && errorSize > 0) std::snprintf(error, errorSize, "no text given");
        return nullptr;
    }
    try {
        return refhost::Parser(text).parseAll().release();
    } catch (const refhost::SyntaxError &problem) {
        if (error != nullptr && errorSize > 0)
            std::snprintf(error, errorSize, "at offset %zu: %s", problem.position,
                          problem.reason.c_str());
        return nullptr;
    }
}
