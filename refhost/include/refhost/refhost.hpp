// Owners for what the reference host hands out, for C++ callers.
#pragma once

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "refhost/refhost.h"

namespace rh {

struct ExprDeleter {
    void operator()(RhExpr *expr) const { rh_expr_free(expr); }
};
using Expr = std::unique_ptr<RhExpr, ExprDeleter>;

// Objects are freed through the full table, as the kernel would free them.
struct ImageDeleter {
    void operator()(MImage image) const {
        rh_library_data(RH_TABLE_FULL)->imageFunctions->free(image);
    }
};
struct RawArrayDeleter {
    void operator()(MRawArray array) const {
        rh_library_data(RH_TABLE_FULL)->rawArrayFunctions->free(array);
    }
};
struct TensorDeleter {
    void operator()(MTensor tensor) const { rh_library_data(RH_TABLE_FULL)->tensorFree(tensor); }
};
using Image = std::unique_ptr<QuorbelImage_st, ImageDeleter>;
using RawArray = std::unique_ptr<QuorbelRawArray_st, RawArrayDeleter>;
using Tensor = std::unique_ptr<QuorbelTensor_st, TensorDeleter>;

// Parses input form; a syntax error is a programming error of the caller.
inline Expr parse(const std::string &text) {
    char error[256] = {};
    Expr expr(rh_expr_parse(text.c_str(), error, sizeof error));
    if (expr == nullptr) throw std::invalid_argument("cannot parse \"" + text + "\": " + error);
    return expr;
}

inline std::string format(const RhExpr *expr) {
    if (expr == nullptr) return {};
    const std::unique_ptr<char, decltype(&std::free)> text(rh_expr_format(expr), &std::free);
    return text.get();
}

}  // namespace rh
