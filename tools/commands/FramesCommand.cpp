#include <cstdio>
#include <filesystem>
#include <iostream>
#include <limits>
#include <set>
#include <stdexcept>

#include "Command.h"
#include "FileAccess.h"
#include "FrameSelection.h"
#include "GifFacts.h"
#include "HostTable.h"
#include "ImageOutput.h"
#include "NumberText.h"
#include "Options.h"
#include "Progress.h"
#include "refhost/refhost.hpp"

namespace tarvex_cli {
namespace {

const char kFramesHelp[] = R"(usage: tarvex frames FILE.gif -o DIR [--frames LIST] [--name PATTERN]

Writes composited frames of a GIF file, as the plug-in's ReadOneFrame
returns them, into DIR (created when missing), and prints the name of each
file it writes. A frame with a transparent colour, or one that does not
cover the whole canvas, is written as RGBA PNG; the others as RGB.

  -o, --output DIR   where to write the pictures
  --frames LIST      only these frames, counted from 1: 2-5,9 or 3- (to the
                     last); --frame N is one frame
  --name PATTERN     file names, with the frame number as %d, %3d or %03d
                     (default frame-%03d.png); .png or .gif chooses the
                     format (GIF for frames of at most 256 colours), or a
                     gif: or png: prefix, which is not part of the names

So that the frames of one run are never mixed with those of an earlier one,
the command refuses a DIR that holds files of the same pattern which it
would not write itself. FILE.gif may be - for standard input.

Examples:
  tarvex frames anim.gif -o frames/
  tarvex frames anim.gif -o frames/ --frames 2-5,9 --name 'still-%02d.png'
)";

struct Options {
    std::string file, directory;
    std::vector<FrameRange> frames{{1, std::nullopt}};
    std::string pattern = "frame-%03d.png";
};

const std::vector<OptionRule> kFramesOptions{
    {"--output", "-o", true}, {"--frame", {}, true}, {"--frames", {}, true}, {"--name", {}, true}};

std::vector<FrameRange> rangesOption(const ParsedOptions &parsed) {
    if (parsed.has("--frame") && parsed.has("--frames")) throw usageError("frames: give --frame or --frames, not both");
    try {
        if (auto frame = parsed.value("--frame")) {
            const long number = wholeNumberOption("frames", "--frame", *frame, 1, std::numeric_limits<long>::max());
            return {{number, number}};
        }
        if (auto list = parsed.value("--frames")) return parseFrameRanges(*list);
    } catch (const std::invalid_argument &error) {
        throw usageError("frames: --frames: " + std::string(error.what()));
    }
    return {{1, std::nullopt}};
}

Options parseOptions(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("frames", args, kFramesOptions);
    Options options;
    options.file = onlyOperand("frames", parsed, "GIF file");
    options.directory = parsed.value("--output").value_or("");
    if (options.directory.empty()) throw usageError("frames: where to? give -o DIR");
    options.frames = rangesOption(parsed);
    options.pattern = parsed.value("--name").value_or(options.pattern);
    try {
        NumberedName{outputPath(options.pattern)};
    } catch (const std::invalid_argument &error) {
        throw usageError("frames: --name: " + std::string(error.what()));
    }
    imageFormatFor("frames", options.pattern);
    return options;
}

long frameCount(const std::string &file) {
    const ImportExpr metadata = askGifReader("ReadFileMetadata", file);
    return static_cast<long>(rh_expr_integer(ruleValue(metadata.get(), "ImageCount")));
}

rh::Image readFrame(const std::string &file, long number) {
    RhValue args[2]{};
    args[0].kind = RH_STRING;
    args[0].value.string = file.c_str();
    args[1].kind = RH_INTEGER;
    args[1].value.integer = number;
    RhValue result{};
    result.kind = RH_IMAGE;
    const int code = rh_call(plugin(), "ReadOneFrame", 2, args, &result);
    if (code != 0) throw CliError(importFailure(file, code));
    return rh::Image(result.value.image);
}

// Files of the pattern in the directory that this run would not write.
void refuseStaleFrames(const Options &options, const NumberedName &name, const std::vector<long> &frames) {
    std::set<std::string> written;
    for (long frame : frames) written.insert(name(frame));
    std::set<std::string> stale;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(options.directory, error)) {
        const std::string file = entry.path().filename().string();
        if (name.matches(file) && written.count(file) == 0) stale.insert(file);
    }
    if (!stale.empty())
        throw CliError("frames: " + (std::filesystem::path(options.directory) / *stale.begin()).string() +
                       (stale.size() > 1 ? " and " + countOf(long(stale.size() - 1), "other file") : "") +
                       " of an earlier run would stay beside this run's frames; remove them, or write to another "
                       "directory or with another --name");
}

int runFrames(const std::vector<std::string> &args) {
    const Options options = parseOptions(args);
    // A gif: or png: prefix names the format of every file, not a part of
    // their names.
    const std::string format = options.pattern.substr(0, options.pattern.size() - outputPath(options.pattern).size());
    const NumberedName name(outputPath(options.pattern));
    const std::string file = readablePath(options.file);
    std::vector<long> frames;
    try {
        frames = selectFrames(options.frames, frameCount(file));
    } catch (const std::invalid_argument &error) {
        throw CliError(options.file + ": " + error.what());
    }
    std::error_code error;
    std::filesystem::create_directories(options.directory, error);
    if (error) throw CliError("cannot create " + options.directory + ": " + error.message());
    refuseStaleFrames(options, name, frames);
    Progress progress("frames", frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const std::string path = (std::filesystem::path(options.directory) / name(frames[i])).string();
        writeImage(readFrame(file, frames[i]).get(), format + path);
        std::cout << path << '\n';
        progress.advance(i + 1);
    }
    return 0;
}

const RegisterCommand registered{
    {"frames", "write the composited frames of a GIF file as PNG or GIF", kFramesHelp, &runFrames}};

}  // namespace
}  // namespace tarvex_cli
