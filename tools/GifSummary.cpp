#include "GifSummary.h"

#include <tuple>
#include <utility>

#include "ImportQueries.h"

namespace tarvex_cli {
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
