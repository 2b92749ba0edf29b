#include <cstdio>
#include <iostream>

#include "Command.h"
#include "GifFacts.h"
#include "Options.h"

namespace tarvex_cli {
namespace {

const char kPaletteHelp[] = R"(usage: tarvex palette FILE.gif

Prints the global palette of a GIF file (ReadGlobalPalette) and the local
palette of every frame that has one (ReadPalettes), one colour a line:
index, hex colour and its red, green and blue values.
)";

void printColors(const std::vector<std::vector<long long>> &rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto &c = rows[i];
        std::printf("  %3zu  #%02llx%02llx%02llx  %3lld %3lld %3lld\n", i, c[0], c[1], c[2], c[0], c[1], c[2]);
    }
}

int runPalette(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("palette", args, {});
    if (parsed.operands().size() != 1) throw usageError("palette: give one GIF file");
    const std::string &file = parsed.operands().front();
    const auto global = readGlobalPaletteRows(file);
    const ImportExpr locals = askGifReader("ReadPalettes", file);
    if (global.empty()) {
        std::printf("global palette: none\n");
    } else {
        std::printf("global palette: %zu colours\n", global.size());
        printColors(global);
    }
    for (std::size_t i = 0; i < rh_expr_length(locals.get()); ++i) {
        const RhExpr *palette = rh_expr_part(locals.get(), i);
        if (isSymbol(palette, "None")) continue;
        const auto rows = integerRows(palette);
        std::printf("frame %zu local palette: %zu colours\n", i + 1, rows.size());
        printColors(rows);
    }
    std::fflush(stdout);
    return 0;
}

const RegisterCommand registered{
    {"palette", "print the global and local palettes of a GIF file", kPaletteHelp, &runPalette}};

}  // namespace
}  // namespace tarvex_cli
