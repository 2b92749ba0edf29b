// Expression trees, as the kernel's input form and its links know them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "refhost/refhost.h"

struct RhExpr {
    RhExprKind kind = RH_EXPR_SYMBOL;
    long long integer = 0;
    double real = 0;
    std::string text;  // string bytes, symbol name or head
    std::vector<std::unique_ptr<RhExpr>> parts;
};

namespace refhost {

using ExprPtr = std::unique_ptr<RhExpr>;

// Deeper nesting is refused by the parser and the link reader, so that hostile
// input ends in an error rather than in a stack overflow.
constexpr int maxExprDepth = 1000;

ExprPtr makeInteger(long long value);
ExprPtr makeReal(double value);
ExprPtr makeString(std::string bytes);
ExprPtr makeSymbol(std::string name);
ExprPtr makeNormal(std::string head, std::vector<ExprPtr> parts = {});

std::string formatExpr(const RhExpr &expr);

}  // namespace refhost
