#include <cstdio>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "Command.h"
#include "Escapes.h"
#include "FileAccess.h"
#include "GifFacts.h"
#include "Options.h"

namespace tarvex_cli {
namespace {

const char kInfoHelp[] = R"(usage: tarvex info FILE.gif [--expr | --json]

Describes a GIF file as the plug-in reads it: canvas size, frame count,
background, looping and comments, then one line per usable frame with its
size, offset, delay in seconds, disposal, transparent colour, the channels of
its composited picture and the palette it draws with.

  --expr   print the exact expressions that ReadFileMetadata,
           ReadFrameMetadata and ReadPalettes wrote, one per line
  --json   print the same facts as one JSON object

FILE.gif may be - for standard input. Comments are printed with control
characters escaped (\033), so that nothing in a file acts on the terminal.

Frames that lie outside the canvas or have no colours are not counted:
they are left out by the plug-in and the others are numbered on.
)";

std::string hexColor(const std::vector<int> &rgb) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", rgb[0], rgb[1], rgb[2]);
    return text;
}

std::string loopText(const GifFacts &facts) {
    if (!facts.repetitions) return "loops forever";
    if (*facts.repetitions == 1) return "plays once";
    return "plays " + std::to_string(*facts.repetitions) + " times";
}

std::string delayText(const GifFrameFacts &frame) {
    if (!frame.delaySeconds) return "none";
    std::ostringstream text;
    text << *frame.delaySeconds << " s";
    return text.str();
}

std::string disposalText(const GifFrameFacts &frame) {
    if (frame.disposal == "None") return "keep";
    if (frame.disposal == "Background") return "background";
    if (frame.disposal == "Previous") return "previous";
    return "unspecified";
}

std::string paletteText(const GifFrameFacts &frame, const GifFacts &facts) {
    if (frame.localPaletteSize > 0) return "local " + std::to_string(frame.localPaletteSize);
    return "global " + std::to_string(facts.globalPaletteSize);
}

void printText(const std::string &file, const GifFacts &facts) {
    std::cout << printableText(file) << ": " << facts.width << "x" << facts.height << " canvas, " << facts.frameCount
              << (facts.frameCount == 1 ? " frame, " : " frames, ") << loopText(facts) << '\n';
    std::cout << "background: "
              << (facts.background ? hexColor(*facts.background) : std::string("none (no global palette)"))
              << '\n';
    // A comment is the file's text: control bytes are shown as escapes, never sent to the terminal.
    for (const std::string &comment : facts.comments) std::cout << "comment: " << printableText(comment) << '\n';
    std::cout << '\n'
              << std::left << std::setw(7) << "frame" << std::setw(11) << "size" << std::setw(11)
              << "offset" << std::setw(10) << "delay" << std::setw(13) << "disposal" << std::setw(13)
              << "transparent" << std::setw(10) << "channels" << "palette\n";
    for (std::size_t i = 0; i < facts.frames.size(); ++i) {
        const GifFrameFacts &f = facts.frames[i];
        std::cout << std::setw(7) << i + 1 << std::setw(11)
                  << std::to_string(f.width) + "x" + std::to_string(f.height) << std::setw(11)
                  << std::to_string(f.left) + "," + std::to_string(f.top) << std::setw(10) << delayText(f)
                  << std::setw(13) << disposalText(f) << std::setw(13)
                  << (f.transparentColor ? hexColor(*f.transparentColor) : std::string("none"))
                  << std::setw(10) << f.channels << paletteText(f, facts) << '\n';
    }
}

std::string jsonString(const std::string &text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", c);
            out += escape;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

std::string jsonColor(const std::optional<std::vector<int>> &rgb) {
    if (!rgb) return "null";
    std::string text = "[";
    for (std::size_t k = 0; k < 3; ++k) text.append(k ? ", " : "").append(std::to_string((*rgb)[k]));
    return text + "]";
}

void printJson(const std::string &file, const GifFacts &facts) {
    std::cout << "{\n  \"file\": " << jsonString(file) << ",\n  \"width\": " << facts.width
              << ",\n  \"height\": " << facts.height << ",\n  \"frameCount\": " << facts.frameCount
              << ",\n  \"background\": " << jsonColor(facts.background) << ",\n  \"repetitions\": "
              << (facts.repetitions ? std::to_string(*facts.repetitions) : std::string("\"Infinity\""))
              << ",\n  \"globalPaletteSize\": " << facts.globalPaletteSize << ",\n  \"comments\": [";
    for (std::size_t i = 0; i < facts.comments.size(); ++i)
        std::cout << (i ? ", " : "") << jsonString(facts.comments[i]);
    std::cout << "],\n  \"frames\": [";
    for (std::size_t i = 0; i < facts.frames.size(); ++i) {
        const GifFrameFacts &f = facts.frames[i];
        std::ostringstream delay;
        if (f.delaySeconds) delay << *f.delaySeconds;
        std::cout << (i ? "," : "") << "\n    {\"width\": " << f.width << ", \"height\": " << f.height
                  << ", \"left\": " << f.left << ", \"top\": " << f.top
                  << ", \"delaySeconds\": " << (f.delaySeconds ? delay.str() : std::string("null"))
                  << ", \"disposal\": " << (f.disposal.empty() ? std::string("null") : jsonString(f.disposal))
                  << ", \"transparentColor\": " << jsonColor(f.transparentColor)
                  << ", \"channels\": " << f.channels << ", \"localPaletteSize\": " << f.localPaletteSize
                  << ", \"userInput\": " << (f.userInput ? "true" : "false") << "}";
    }
    std::cout << "\n  ]\n}\n";
}

const std::vector<OptionRule> kInfoOptions{{"--expr"}, {"--json"}};

int runInfo(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("info", args, kInfoOptions);
    const std::string &file = onlyOperand("info", parsed, "GIF file");
    const bool expr = parsed.has("--expr"), json = parsed.has("--json");
    if (expr && json) throw usageError("info: --expr and --json exclude each other");
    const GifFacts facts = readGifFacts(readablePath(file));
    if (expr)
        std::cout << facts.fileMetadata << '\n' << facts.frameMetadata << '\n' << facts.palettes << '\n';
    else if (json)
        printJson(file, facts);
    else
        printText(file, facts);
    return 0;
}

const RegisterCommand registered{{"info", "describe a GIF file and its frames", kInfoHelp, &runInfo}};

}  // namespace
}  // namespace tarvex_cli
