#include <cstdio>
#include <filesystem>
#include <iostream>

#include "Command.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "ImportQueries.h"
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
    long frame = 0;  // 0: all
};

long frameNumber(const std::string &text) {
    try {
        std::size_t used = 0;
        const long number = std::stol(text, &used);
        if (used == text.size() && number >= 1) return number;
    } catch (const std::exception &) {
    }
    throw usageError("frames: --frame needs a number from 1 on, not '" + text + "'");
}

Options parseOptions(const std::vector<std::string> &args) {
    Options options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        const bool hasValue = i + 1 < args.size();
        if ((arg == "-o" || arg == "--out") && hasValue) options.directory = args[++i];
        else if (arg == "--frame" && hasValue) options.frame = frameNumber(args[++i]);
        else if (arg.rfind("-", 0) == 0) throw usageError("frames: unknown option or missing value '" + arg + "'");
        else if (options.file.empty()) options.file = arg;
        else throw usageError("frames: one file at a time");
    }
    if (options.file.empty()) throw usageError("frames: which GIF file?");
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
