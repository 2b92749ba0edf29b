#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "ArgumentSyntax.h"
#include "CallRequest.h"
#include "Command.h"
#include "Escapes.h"
#include "HostArguments.h"
#include "HostTable.h"
#include "NumberText.h"
#include "PluginDiscovery.h"
#include "ResultFiles.h"
#include "ResultText.h"

namespace tarvex_cli {
namespace {

struct ExprFree {
    void operator()(RhExpr *expr) const { rh_expr_free(expr); }
};
using Expr = std::unique_ptr<RhExpr, ExprFree>;

std::string formatExpr(const RhExpr *expr) {
    std::unique_ptr<char, decltype(&std::free)> text(rh_expr_format(expr), &std::free);
    return text ? std::string(text.get()) : std::string("(cannot be printed)");
}

std::vector<Argument> parseArguments(const std::string &exportName, const std::vector<std::string> &texts) {
    std::vector<Argument> arguments;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string where = "argument " + std::to_string(i + 1) + " '" + texts[i] + "': ";
        try {
            arguments.push_back(parseArgument(texts[i]));
        } catch (const std::invalid_argument &error) {
            throw usageError(where + error.what());
        }
        if (takesStringAt(exportName, i) && !std::holds_alternative<StringValue>(arguments.back()))
            throw usageError(where + exportName + " takes a string there (str:TEXT)");
    }
    return arguments;
}

RhPlugin *pluginWithExport(const std::string &name) {
    RhPlugin *loaded = plugin();
    if (rh_plugin_symbol(loaded, name.c_str()) == nullptr)
        throw CliError("the plug-in has no export named '" + name + "'");
    return loaded;
}

// An expression, or for convenience a bare file name: a word that cannot be
// read as an expression and has nothing of one's punctuation.
Expr parseLinkArgument(const std::string &text) {
    char error[256] = {};
    Expr parsed(rh_expr_parse(text.c_str(), error, sizeof error));
    if (parsed) return parsed;
    if (text.find_first_of("{}[]\",") != std::string::npos)
        throw usageError("'" + text + "' is not an expression: " + error);
    RhExpr *name = rh_expr_new_string(text.c_str(), text.size());
    return Expr(rh_expr_new_normal("List", &name, 1));
}

void printBooks() {
    const RhCounters books = rh_counters();
    std::cout << "books: live images " << books.liveImages << ", raw arrays " << books.liveRawArrays
              << ", tensors " << books.liveTensors << "; strings issued " << books.stringsIssued
              << ", released " << books.stringsReleased << ", outstanding " << rh_strings_outstanding()
              << "; bad releases " << books.badReleases << ", bad handles " << books.badHandles
              << "; messages " << books.messages << '\n';
}

std::string handleText(const void *handle) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", handle);
    return text;
}

bool isLive(const RhValue &result) {
    switch (result.kind) {
    case RH_IMAGE: return rh_image_is_live(result.value.image);
    case RH_RAW_ARRAY: return rh_raw_array_is_live(result.value.rawArray);
    default: return rh_tensor_is_live(result.value.tensor);
    }
}

const void *handleOf(const RhValue &result) {
    switch (result.kind) {
    case RH_IMAGE: return result.value.image;
    case RH_RAW_ARRAY: return result.value.rawArray;
    default: return result.value.tensor;
    }
}

std::string describeObject(const RhValue &result, bool toFile) {
    switch (result.kind) {
    case RH_IMAGE: return summarizeImage(result.value.image);
    case RH_RAW_ARRAY: return toFile ? summarizeRawArray(result.value.rawArray) : formatRawArray(result.value.rawArray);
    default: return toFile ? summarizeTensor(result.value.tensor) : formatTensor(result.value.tensor);
    }
}

std::vector<std::string> saveObject(const RhValue &result, const std::string &path) {
    switch (result.kind) {
    case RH_IMAGE: return saveImage(result.value.image, path);
    case RH_RAW_ARRAY: return {saveRawArray(result.value.rawArray, path)};
    default: return {saveTensor(result.value.tensor, path)};
    }
}

void freeObject(const RhValue &result) {
    const QuorbelLibraryData table = hostTable();
    switch (result.kind) {
    case RH_IMAGE: table->imageFunctions->free(result.value.image); break;
    case RH_RAW_ARRAY: table->rawArrayFunctions->free(result.value.rawArray); break;
    default: table->tensorFree(result.value.tensor); break;
    }
}

// Prints an image, raw array or tensor result, saves it when asked, and frees
// it: it belongs to the caller, unless it is one of the arguments themselves.
void reportObject(const RhValue &result, const CallRequest &request, const HostArguments &arguments) {
    if (!isLive(result)) {
        std::cout << "result: written, but " << handleText(handleOf(result)) << " is no live object of that kind\n";
        return;
    }
    // Freed whatever happens below: a failed save must not leak the result.
    struct Freer {
        const RhValue &object;
        bool enabled;
        ~Freer() {
            if (enabled) freeObject(object);
        }
    } freer{result, true};
    if (std::size_t position = arguments.positionOf(handleOf(result))) {
        std::cout << "note: the result is argument " << position << "'s own object\n";
        freer.enabled = false;
    }
    std::cout << "result: " << describeObject(result, request.outPath.has_value()) << '\n';
    if (request.outPath)
        for (const std::string &line : saveObject(result, *request.outPath)) std::cout << "saved: " << line << '\n';
}

void reportResult(const RhValue &result, const CallRequest &request, const HostArguments &arguments) {
    if (!result.written) {
        std::cout << "result: not written\n";
        return;
    }
    switch (result.kind) {
    case RH_NONE: std::cout << "result: written (not read: --result none)\n"; break;
    case RH_BOOLEAN: std::cout << "result: " << (result.value.boolean ? "True" : "False") << '\n'; break;
    case RH_INTEGER: std::cout << "result: " << result.value.integer << '\n'; break;
    case RH_REAL: std::cout << "result: " << formatReal(result.value.real) << '\n'; break;
    case RH_STRING:
        // The plug-in keeps the string: it is printed, never released.
        if (result.value.string == nullptr) std::cout << "result: a null string pointer\n";
        else std::cout << "result: " << quoteString(result.value.string) << '\n';
        break;
    default: reportObject(result, request, arguments); break;
    }
}

int callArgumentExport(const CallRequest &request) {
    const std::vector<Argument> parsed = parseArguments(request.exportName, request.arguments);
    RhPlugin *loaded = pluginWithExport(request.exportName);
    const std::size_t count = static_cast<std::size_t>(request.argc.value_or(static_cast<mint>(parsed.size())));
    HostArguments arguments(parsed);
    const std::vector<RhValue> slots = arguments.slots(count);
    RhValue result{};
    result.kind = request.result;
    const int code = rh_call(loaded, request.exportName.c_str(), static_cast<mint>(count), slots.data(), &result);
    std::cout << "code: " << code << '\n';
    reportResult(result, request, arguments);
    for (const std::string &note : arguments.release()) std::cout << "note: " << note << '\n';
    if (request.books) printBooks();
    return code == 0 ? 0 : 1;
}

int callLinkExport(const CallRequest &request) {
    Expr argument = parseLinkArgument(request.arguments.front());
    RhPlugin *loaded = pluginWithExport(request.exportName);
    RhExpr *rawAnswer = nullptr;
    const int code = rh_call_link(loaded, request.exportName.c_str(), argument.get(), &rawAnswer);
    Expr answer(rawAnswer);
    std::cout << "code: " << code << '\n';
    std::cout << "result: " << (answer ? formatExpr(answer.get()) : std::string("not written")) << '\n';
    if (request.books) printBooks();
    return code == 0 ? 0 : 1;
}

int runCall(const std::vector<std::string> &args) {
    const CallRequest request = parseCallRequest(args);
    setPluginSetup({request.initialize, request.table});
    return request.linkExport ? callLinkExport(request) : callArgumentExport(request);
}

const std::string kCallHelp = std::string(R"(usage: tarvex call [OPTIONS] EXPORT [ARG...]

Calls one export of the plug-in through the reference host, the way the
kernel calls it, and prints its code and its result in the kernel's input
form. Options may stand anywhere; -- ends them.

Options:
  --result KIND    how to read the result: none, boolean, integer, real,
                   string, image, raw-array or tensor (known exports have a
                   default; other names need this option)
  --out FILE       save an image, raw-array or tensor result (see below)
  --no-init        call without initialising the plug-in first
  --table TABLE    initialise with the full callback table (the default),
                   or without its image or raw-array functions:
                   full, no-images, no-raw-arrays
  --argc N         pass N as the argument count, whatever the number of
                   arguments given: fewer are cut off, extra slots are zero
  --books          print the host's books after the call and after the tool
                   freed its arguments and the result: live objects (leaks),
                   strings issued and released, bad releases and handles

Where the kernel passes only strings to a known export (file names, comments,
method names), the tool does too: anything else there is refused.

Link exports (ReadFileMetadata, ReadFrameMetadata, ReadPalettes,
ReadRasterBits) take one expression in input form, such as '{"a.gif"}' or
'List["a.gif"]'; a bare file name stands for {"name"}.

)") + kArgumentSyntaxHelp + R"(
Output:
  code: N          the export's code
  result: ...      the result, or "not written". Strings are quoted with
                   escapes ("\002\007\007\007\003" is the list separator);
                   raw arrays and tensors print as RawArray["Real32", {...}]
                   and Tensor["Integer", {...}], images as a summary.
  saved: FILE ...  with --out: PNG for 8/16-bit images of 1 to 4 interleaved
                   channels (3-D images one file per slice, FILE-1.png, ...),
                   otherwise (or for a FILE ending in .raw) raw samples; raw
                   arrays and tensors as their elements.
                   Each line tells the argument that reads the file back.

Exit status: 0 when the export returned 0, 1 when it returned another code
or the call failed, 2 for a bad command line.

Examples:
  tarvex call StringSeparator
  tarvex call UniqueColors png:photo.png false
  tarvex call ImageQuantize png:photo.png 16 str:None true 1 5
  tarvex call DitherImage png:photo.png 'raw:uint8:{{0,0,0},{255,255,255}}' \
              str:FloydSteinberg true false --out dithered.png
  tarvex call ReadFileMetadata '{"anim.gif"}'
  tarvex call ReadOneFrame str:anim.gif 2 --out frame.png
)";

const RegisterCommand registered{{"call", "call one export of the plug-in with typed arguments", kCallHelp.c_str(),
                                  &runCall}};

}  // namespace
}  // namespace tarvex_cli
