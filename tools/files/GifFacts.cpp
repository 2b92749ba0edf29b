#include "GifFacts.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <utility>

#include "Command.h"
#include "HostTable.h"

namespace tarvex_cli {

std::string importFailure(const std::string &file, int code) {
    switch (code) {
    case -1: return file + ": no usable frames";
    case -2: return "cannot open " + file;
    case -3: return file + ": not a GIF file that can be decoded";
    default: return file + ": the plug-in failed with code " + std::to_string(code);
    }
}

ImportExpr askGifReader(const char *exportName, const std::string &file) {
    RhExpr *name = rh_expr_new_string(file.c_str(), file.size());
    ImportExpr arguments(rh_expr_new_normal("List", &name, 1));
    RhExpr *answer = nullptr;
    const int code = rh_call_link(plugin(), exportName, arguments.get(), &answer);
    ImportExpr owned(answer);
    if (code != 0) throw CliError(importFailure(file, code));
    if (!owned) throw CliError(file + ": " + exportName + " gave no answer");
    return owned;
}

std::vector<std::vector<long long>> readGlobalPaletteRows(const std::string &file) {
    RhValue argument{};
    argument.kind = RH_STRING;
    argument.value.string = file.c_str();
    RhValue result{};
    result.kind = RH_TENSOR;
    const int code = rh_call(plugin(), "ReadGlobalPalette", 1, &argument, &result);
    if (code != 0) throw CliError(importFailure(file, code));
    QuorbelLibraryData table = hostTable();
    MTensor tensor = result.value.tensor;
    std::vector<std::vector<long long>> rows;
    if (table->tensorGetRank(tensor) == 2) {
        const mint *data = table->tensorGetIntegerData(tensor);
        const mint count = table->tensorGetDimensions(tensor)[0];
        for (mint i = 0; i < count; ++i) rows.push_back({data[3 * i], data[3 * i + 1], data[3 * i + 2]});
    }
    table->tensorFree(tensor);
    return rows;
}

const RhExpr *ruleValue(const RhExpr *rules, const char *key) {
    for (std::size_t i = 0; i < rh_expr_length(rules); ++i) {
        const RhExpr *rule = rh_expr_part(rules, i);
        if (rh_expr_kind(rule) != RH_EXPR_NORMAL || std::strcmp(rh_expr_text(rule), "Rule") != 0) continue;
        const RhExpr *name = rh_expr_part(rule, 0);
        if (rh_expr_kind(name) == RH_EXPR_STRING && std::strcmp(rh_expr_text(name), key) == 0)
            return rh_expr_part(rule, 1);
    }
    throw CliError(std::string("the plug-in's answer has no ") + key);
}

bool isSymbol(const RhExpr *expr, const char *name) {
    return rh_expr_kind(expr) == RH_EXPR_SYMBOL && std::strcmp(rh_expr_text(expr), name) == 0;
}

std::string exprText(const RhExpr *expr) {
    std::unique_ptr<char, decltype(&std::free)> text(rh_expr_format(expr), &std::free);
    return text ? std::string(text.get()) : std::string();
}

std::optional<std::vector<int>> rgbBytes(const RhExpr *color) {
    if (rh_expr_kind(color) != RH_EXPR_NORMAL || std::strcmp(rh_expr_text(color), "RGBColor") != 0)
        return std::nullopt;
    std::vector<int> bytes;
    for (std::size_t i = 0; i < 3; ++i)
        bytes.push_back(static_cast<int>(std::lround(rh_expr_real(rh_expr_part(color, i)) * 255.0)));
    return bytes;
}

std::vector<std::vector<long long>> integerRows(const RhExpr *matrix) {
    std::vector<std::vector<long long>> rows;
    for (std::size_t r = 0; r < rh_expr_length(matrix); ++r) {
        const RhExpr *row = rh_expr_part(matrix, r);
        std::vector<long long> values;
        for (std::size_t c = 0; c < rh_expr_length(row); ++c)
            values.push_back(rh_expr_integer(rh_expr_part(row, c)));
        rows.push_back(values);
    }
    return rows;
}

namespace {

long integerAt(const RhExpr *list, std::size_t i) { return static_cast<long>(rh_expr_integer(rh_expr_part(list, i))); }
long integerRule(const RhExpr *rules, const char *key) { return static_cast<long>(rh_expr_integer(ruleValue(rules, key))); }

// The two integers of a {x, y} value, such as a size or an offset.
std::pair<long, long> integerPair(const RhExpr *rules, const char *key) {
    const RhExpr *pair = ruleValue(rules, key);
    return {integerAt(pair, 0), integerAt(pair, 1)};
}

std::vector<std::string> commentsOf(const RhExpr *value) {
    if (isSymbol(value, "None")) return {};
    if (rh_expr_kind(value) == RH_EXPR_STRING) return {std::string(rh_expr_text(value), rh_expr_text_length(value))};
    std::vector<std::string> comments;
    for (std::size_t i = 0; i < rh_expr_length(value); ++i) {
        const RhExpr *comment = rh_expr_part(value, i);
        comments.emplace_back(rh_expr_text(comment), rh_expr_text_length(comment));
    }
    return comments;
}

void readFileFacts(const RhExpr *rules, GifFacts &facts) {
    std::tie(facts.width, facts.height) = integerPair(rules, "ImageSize");
    facts.frameCount = integerRule(rules, "ImageCount");
    facts.background = rgbBytes(ruleValue(rules, "Background"));
    const RhExpr *repetitions = ruleValue(rules, "AnimationRepetitions");
    if (!isSymbol(repetitions, "Infinity")) facts.repetitions = static_cast<long>(rh_expr_integer(repetitions));
    facts.comments = commentsOf(ruleValue(rules, "Comments"));
}

GifFrameFacts frameFacts(const RhExpr *rules) {
    GifFrameFacts frame;
    std::tie(frame.width, frame.height) = integerPair(rules, "ImageSize");
    std::tie(frame.left, frame.top) = integerPair(rules, "ImageOffset");
    frame.channels = integerRule(rules, "Channels");
    frame.transparentColor = rgbBytes(ruleValue(rules, "TransparentColor"));
    const RhExpr *disposal = ruleValue(rules, "DisposalOperation");
    if (rh_expr_kind(disposal) == RH_EXPR_STRING) frame.disposal = rh_expr_text(disposal);
    const RhExpr *duration = ruleValue(rules, "DisplayDurations");
    if (rh_expr_kind(duration) == RH_EXPR_REAL) frame.delaySeconds = rh_expr_real(duration);
    frame.userInput = isSymbol(ruleValue(rules, "UserInputFlag"), "True");
    return frame;
}

}  // namespace

GifFacts readGifFacts(const std::string &file) {
    GifFacts facts;
    const ImportExpr fileRules = askGifReader("ReadFileMetadata", file);
    const ImportExpr frameRules = askGifReader("ReadFrameMetadata", file);
    const ImportExpr palettes = askGifReader("ReadPalettes", file);
    facts.fileMetadata = exprText(fileRules.get());
    facts.frameMetadata = exprText(frameRules.get());
    facts.palettes = exprText(palettes.get());
    readFileFacts(fileRules.get(), facts);
    for (std::size_t i = 0; i < rh_expr_length(frameRules.get()); ++i) {
        GifFrameFacts frame = frameFacts(rh_expr_part(frameRules.get(), i));
        const RhExpr *palette = rh_expr_part(palettes.get(), i);
        if (!isSymbol(palette, "None")) frame.localPaletteSize = static_cast<long>(rh_expr_length(palette));
        facts.frames.push_back(frame);
    }
    facts.globalPaletteSize = static_cast<long>(readGlobalPaletteRows(file).size());
    return facts;
}

}  // namespace tarvex_cli
