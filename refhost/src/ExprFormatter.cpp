// Input form of expressions.

#include <charconv>
#include <cmath>
#include <string>

#include "Expr.h"

namespace refhost {
namespace {

void appendString(std::string &out, const std::string &bytes) {
    out += '"';
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '\r': out += "\\r"; break;
        default:
            if (byte < 0x20 || byte == 0x7F) {
                out += '\\';
                out += static_cast<char>('0' + (byte >> 6));
                out += static_cast<char>('0' + ((byte >> 3) & 7));
                out += static_cast<char>('0' + (byte & 7));
            } else {
                out += c;
            }
        }
    }
    out += '"';
}

// The trailing dot keeps an integral real from reading back as an integer.
void appendReal(std::string &out, double value) {
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    const std::string text(buffer, end);
    out += text;
    if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos) out += '.';
}

bool isRule(const RhExpr &expr) {
    return expr.kind == RH_EXPR_NORMAL && expr.text == "Rule" && expr.parts.size() == 2;
}

void append(std::string &out, const RhExpr &expr);

void appendSequence(std::string &out, const RhExpr &expr, char open, char close) {
    out += open;
    for (std::size_t i = 0; i < expr.parts.size(); ++i) {
        if (i > 0) out += ", ";
        append(out, *expr.parts[i]);
    }
    out += close;
}

// Rules group to the right, so only a rule on the left needs parentheses.
void appendRule(std::string &out, const RhExpr &expr) {
    const RhExpr &left = *expr.parts[0];
    if (isRule(left)) out += '(';
    append(out, left);
    if (isRule(left)) out += ')';
    out += " -> ";
    append(out, *expr.parts[1]);
}

void append(std::string &out, const RhExpr &expr) {
    switch (expr.kind) {
    case RH_EXPR_INTEGER: out += std::to_string(expr.integer); break;
    case RH_EXPR_REAL: appendReal(out, expr.real); break;
    case RH_EXPR_STRING: appendString(out, expr.text); break;
    case RH_EXPR_SYMBOL: out += expr.text; break;
    case RH_EXPR_NORMAL:
        if (expr.text == "List") {
            appendSequence(out, expr, '{', '}');
        } else if (isRule(expr)) {
            appendRule(out, expr);
        } else {
            out += expr.text;
            appendSequence(out, expr, '[', ']');
        }
        break;
    }
}

}  // namespace

std::string formatExpr(const RhExpr &expr) {
    std::string out;
    append(out, expr);
    return out;
}

}  // namespace refhost
