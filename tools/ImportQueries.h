#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "refhost/refhost.h"

namespace tarvex_cli {

struct ExprDeleter {
    void operator()(RhExpr *expr) const { rh_expr_free(expr); }
};
using ImportExpr = std::unique_ptr<RhExpr, ExprDeleter>;

// The answer of a link reader of the plug-in for one GIF file. Throws
// CliError with a readable reason when the reader returns a failure code.
ImportExpr askGifReader(const char *exportName, const std::string &file);

// The file's global palette as red, green, blue rows (empty when it has none).
std::vector<std::vector<long long>> readGlobalPaletteRows(const std::string &file);

// A readable reason for a code of the import readers.
std::string importFailure(const std::string &file, int code);

// Expression helpers over the readers' answers.
const RhExpr *ruleValue(const RhExpr *rules, const char *key);
bool isSymbol(const RhExpr *expr, const char *name);
std::string exprText(const RhExpr *expr);  // input form
// {r, g, b} in 0..255 from RGBColor[r, g, b] with reals in 0..1.
std::optional<std::vector<int>> rgbBytes(const RhExpr *color);
std::vector<std::vector<long long>> integerRows(const RhExpr *matrix);

}  // namespace tarvex_cli
