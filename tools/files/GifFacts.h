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

// What the plug-in's import readers say about a GIF file, gathered for the
// import commands.
struct GifFrameFacts {
    long width = 0, height = 0, left = 0, top = 0;
    std::optional<double> delaySeconds;  // none: the file gives no delay
    std::string disposal;                // "None", "Background", "Previous" or "" (unspecified)
    std::optional<std::vector<int>> transparentColor;
    long channels = 3;
    long localPaletteSize = 0;  // 0: the frame uses the global palette
    bool userInput = false;
};

struct GifFacts {
    long width = 0, height = 0, frameCount = 0;
    std::optional<std::vector<int>> background;  // none: no global palette
    std::optional<long> repetitions;             // none: loops forever
    std::vector<std::string> comments;
    long globalPaletteSize = 0;
    std::vector<GifFrameFacts> frames;
    // The readers' answers as they were written.
    std::string fileMetadata, frameMetadata, palettes;
};

GifFacts readGifFacts(const std::string &file);

}  // namespace tarvex_cli
