#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "FileAccess.h"
#include "GifFacts.h"
#include "Options.h"

namespace tarvex_cli {
namespace {

const char kPaletteHelp[] = R"(usage: tarvex palette FILE.gif [--json]

Prints the global palette of a GIF file (ReadGlobalPalette) and the local
palette of every frame that has one (ReadPalettes), one colour a line:
index, hex colour and its red, green and blue values. The text can be given
back to --palette of dither, gif and quantize, which read its first palette.
FILE.gif may be - for standard input.

  --json   the same as one JSON object:
           {"global": [[r, g, b], ...] or null,
            "frames": [{"frame": N, "local": [[r, g, b], ...]}, ...]}
           with an entry for every frame that has a local palette

Example:
  tarvex palette anim.gif > colours.txt
  tarvex dither photo.png -o out.png --palette colours.txt
)";

using Rows = std::vector<std::vector<long long>>;

struct LocalPalette {
    std::size_t frame;
    Rows colors;
};

struct Palettes {
    Rows global;
    std::vector<LocalPalette> locals;
};

Palettes readPalettes(const std::string &file) {
    Palettes palettes{readGlobalPaletteRows(file), {}};
    const ImportExpr locals = askGifReader("ReadPalettes", file);
    for (std::size_t i = 0; i < rh_expr_length(locals.get()); ++i) {
        const RhExpr *palette = rh_expr_part(locals.get(), i);
        if (!isSymbol(palette, "None")) palettes.locals.push_back({i + 1, integerRows(palette)});
    }
    return palettes;
}

void printColors(const Rows &rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto &c = rows[i];
        std::printf("  %3zu  #%02llx%02llx%02llx  %3lld %3lld %3lld\n", i, c[0], c[1], c[2], c[0], c[1], c[2]);
    }
}

void printText(const Palettes &palettes) {
    if (palettes.global.empty()) {
        std::printf("global palette: none\n");
    } else {
        std::printf("global palette: %zu colours\n", palettes.global.size());
        printColors(palettes.global);
    }
    for (const LocalPalette &local : palettes.locals) {
        std::printf("frame %zu local palette: %zu colours\n", local.frame, local.colors.size());
        printColors(local.colors);
    }
}

std::string jsonRows(const Rows &rows) {
    std::string text = "[";
    for (std::size_t i = 0; i < rows.size(); ++i)
        text += (i ? ", [" : "[") + std::to_string(rows[i][0]) + ", " + std::to_string(rows[i][1]) + ", " +
                std::to_string(rows[i][2]) + "]";
    return text + "]";
}

void printJson(const Palettes &palettes) {
    std::printf("{\n  \"global\": %s,\n  \"frames\": [",
                palettes.global.empty() ? "null" : jsonRows(palettes.global).c_str());
    for (std::size_t i = 0; i < palettes.locals.size(); ++i)
        std::printf("%s\n    {\"frame\": %zu, \"local\": %s}", i ? "," : "", palettes.locals[i].frame,
                    jsonRows(palettes.locals[i].colors).c_str());
    std::printf("%s]\n}\n", palettes.locals.empty() ? "" : "\n  ");
}

int runPalette(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("palette", args, {{"--json"}});
    const Palettes palettes = readPalettes(readablePath(onlyOperand("palette", parsed, "GIF file")));
    if (parsed.has("--json")) printJson(palettes);
    else printText(palettes);
    std::fflush(stdout);
    return 0;
}

const RegisterCommand registered{
    {"palette", "print the global and local palettes of a GIF file", kPaletteHelp, &runPalette}};

}  // namespace
}  // namespace tarvex_cli
