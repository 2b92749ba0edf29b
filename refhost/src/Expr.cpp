// Building and inspecting expressions.

#include "Expr.h"

#include <cstring>

namespace refhost {

ExprPtr makeInteger(long long value) {
    auto expr = std::make_unique<RhExpr>();
    expr->kind = RH_EXPR_INTEGER;
    expr->integer = value;
    return expr;
}

ExprPtr makeReal(double value) {
    auto expr = std::make_unique<RhExpr>();
    expr->kind = RH_EXPR_REAL;
    expr->real = value;
    return expr;
}

ExprPtr makeString(std::string bytes) {
    auto expr = std::make_unique<RhExpr>();
    expr->kind = RH_EXPR_STRING;
    expr->text = std::move(bytes);
    return expr;
}

ExprPtr makeSymbol(std::string name) {
    auto expr = std::make_unique<RhExpr>();
    expr->kind = RH_EXPR_SYMBOL;
    expr->text = std::move(name);
    return expr;
}

ExprPtr makeNormal(std::string head, std::vector<ExprPtr> parts) {
    auto expr = std::make_unique<RhExpr>();
    expr->kind = RH_EXPR_NORMAL;
    expr->text = std::move(head);
    expr->parts = std::move(parts);
    return expr;
}

}  // namespace refhost

extern "C" {

void rh_expr_free(RhExpr *expr) { delete expr; }

RhExprKind rh_expr_kind(const RhExpr *expr) { return expr != nullptr ? expr->kind : RH_EXPR_SYMBOL; }

long long rh_expr_integer(const RhExpr *expr) {
    return expr != nullptr && expr->kind == RH_EXPR_INTEGER ? expr->integer : 0;
}

double rh_expr_real(const RhExpr *expr) {
    if (expr == nullptr) return 0;
    if (expr->kind == RH_EXPR_INTEGER) return static_cast<double>(expr->integer);
    return expr->kind == RH_EXPR_REAL ? expr->real : 0;
}

const char *rh_expr_text(const RhExpr *expr) {
    return expr != nullptr ? expr->text.c_str() : "";
}

size_t rh_expr_text_length(const RhExpr *expr) {
    return expr != nullptr ? expr->text.size() : 0;
}

size_t rh_expr_length(const RhExpr *expr) { return expr != nullptr ? expr->parts.size() : 0; }

const RhExpr *rh_expr_part(const RhExpr *expr, size_t i) {
    if (expr == nullptr || i >= expr->parts.size()) return nullptr;
    return expr->parts[i].get();
}

RhExpr *rh_expr_new_integer(long long value) { return refhost::makeInteger(value).release(); }

RhExpr *rh_expr_new_real(double value) { return refhost::makeReal(value).release(); }

RhExpr *rh_expr_new_string(const char *utf8, size_t length) {
    return refhost::makeString(length > 0 ? std::string(utf8, length) : std::string())
        .release();
}

RhExpr *rh_expr_new_symbol(const char *name) {
    return refhost::makeSymbol(name != nullptr ? name : "").release();
}

RhExpr *rh_expr_new_normal(const char *head, RhExpr **arguments, size_t count) {
    std::vector<refhost::ExprPtr> parts;
    bool complete = head != nullptr && (arguments != nullptr || count == 0);
    for (size_t i = 0; arguments != nullptr && i < count; ++i) {
        complete = complete && arguments[i] != nullptr;
        parts.emplace_back(arguments[i]);
    }
    if (!complete) return nullptr;
    return refhost::makeNormal(head, std::move(parts)).release();
}

char *rh_expr_format(const RhExpr *expr) {
    const std::string text = expr != nullptr ? refhost::formatExpr(*expr) : std::string();
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (copy != nullptr) std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

}  // extern "C"
