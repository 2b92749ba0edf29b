#include <cstdio>
#include <filesystem>
#include <iostream>
#include <limits>

#include "Command.h"
#include "GifFacts.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "Options.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kFramesHelp[] = R"(usage: tarvex frames FILE.gif -o DIR [--frame N]

Writes every composited frame of a GIF file, as the plug-in's ReadOneFrame
returns it, to DIR/frame-001.png, DIR/frame-002.png, ... (DIR is created when
missing). A frame with a transparent colour, or one that does not cover the
whole canvas, is written as RGBA; the others as RGB.

  -o DIR      where to write the pictures
  --frame N   only frame N (counted from 1)
)";

struct Options {
    std::string file, directory;
    std::int64_t frame = 0;  // 0: all
};

const std::vector<OptionSpec> kFramesOptions{{"--output", "-o", true}, {"--frame", {}, true}};

Options parseOptions(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("frames", args, kFramesOptions);
    Options options;
    if (parsed.operands().size() > 1) throw usageError("frames: one file at a time");
    if (parsed.operands().empty()) throw usageError("frames: which GIF file?");
    options.file = parsed.operands().front();
    options.directory = parsed.value("--output").value_or("");
    if (auto frame = parsed.value("--frame"))
        options.frame = wholeNumberOption("frames", "--frame", *frame, 1, std::numeric_limits<long>::max());
    if (options.directory.empty()) throw usageError("frames: where to? give -o DIR");
    return options;
}

long frameCount(const std::string &file) {
    const ImportExpr metadata = askGifReader("ReadFileMetadata", file);
    return static_cast<long>(rh_expr_integer(ruleValue(metadata.get(), "ImageCount")));
}

std::string writeFrame(const Options &options, long number) {
    RhValue args[2]{};
    args[0].kind = RH_STRING;
    args[0].value.string = options.file.c_str();
    args[1].kind = RH_INTEGER;
    args[1].value.integer = number;
    RhValue result{};
    result.kind = RH_IMAGE;
    const int code = rh_call(plugin(), "ReadOneFrame", 2, args, &result);
    if (code == -1) throw CliError(options.file + " has no frame " + std::to_string(number));
    if (code != 0) throw CliError(importFailure(options.file, code));
    char name[32];
    std::snprintf(name, sizeof name, "frame-%03ld.png", number);
    const std::string path = (std::filesystem::path(options.directory) / name).string();
    const rh::Image image(result.value.image);
    writePng(image.get(), 0, path);
    return path;
}

int runFrames(const std::vector<std::string> &args) {
    const Options options = parseOptions(args);
    const long count = frameCount(options.file);
    std::error_code error;
    std::filesystem::create_directories(options.directory, error);
    if (error) throw CliError("cannot create " + options.directory + ": " + error.message());
    const long first = options.frame ? options.frame : 1;
    const long last = options.frame ? options.frame : count;
    for (long number = first; number <= last; ++number) std::cout << writeFrame(options, number) << '\n';
    return 0;
}

const RegisterCommand registered{
    {"frames", "write the composited frames of a GIF file as PNG", kFramesHelp, &runFrames}};

}  // namespace
}  // namespace tarvex_cli
