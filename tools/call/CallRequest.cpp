#include "CallRequest.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "Command.h"
#include "NumberText.h"
#include "Options.h"

namespace tarvex_cli {
namespace {

constexpr std::array<std::string_view, 4> kLinkExports{"ReadFileMetadata", "ReadFrameMetadata", "ReadPalettes",
                                                       "ReadRasterBits"};

constexpr std::array<std::pair<std::string_view, RhKind>, 11> kDefaultResults{{
    {"StringSeparator", RH_STRING},
    {"ClearCache", RH_BOOLEAN},
    {"ReadOneFrame", RH_IMAGE},
    {"ReadAllFrames", RH_IMAGE},
    {"ReadGlobalPalette", RH_TENSOR},
    {"ImageQuantize", RH_RAW_ARRAY},
    {"GetQuantizedImage", RH_IMAGE},
    {"UniqueColors", RH_INTEGER},
    {"DitherImage", RH_IMAGE},
    {"WriteFrames", RH_STRING},
    {"WriteColormaps", RH_STRING},
}};

// Where the kernel passes only strings: a plug-in reads such a slot as a
// pointer to text, so anything else there would be followed as one.
constexpr std::size_t kFirst[] = {0};
constexpr std::size_t kThird[] = {2};
constexpr std::size_t kWriteFramesText[] = {1, 2, 4};
constexpr std::size_t kWriteColormapsText[] = {2, 3, 5};

constexpr std::array<std::pair<std::string_view, std::span<const std::size_t>>, 9> kStringSlots{{
    {"ClearCache", kFirst},
    {"ReadOneFrame", kFirst},
    {"ReadAllFrames", kFirst},
    {"ReadGlobalPalette", kFirst},
    {"ImageQuantize", kThird},
    {"GetQuantizedImage", kThird},
    {"DitherImage", kThird},
    {"WriteFrames", kWriteFramesText},
    {"WriteColormaps", kWriteColormapsText},
}};

constexpr std::array<std::pair<std::string_view, RhKind>, 8> kResultKinds{{
    {"none", RH_NONE},
    {"boolean", RH_BOOLEAN},
    {"integer", RH_INTEGER},
    {"real", RH_REAL},
    {"string", RH_STRING},
    {"image", RH_IMAGE},
    {"raw-array", RH_RAW_ARRAY},
    {"tensor", RH_TENSOR},
}};

constexpr std::array<std::pair<std::string_view, int>, 3> kTables{{
    {"full", RH_TABLE_FULL},
    {"no-images", RH_TABLE_WITHOUT_IMAGES},
    {"no-raw-arrays", RH_TABLE_WITHOUT_RAW_ARRAYS},
}};

template <typename Table>
auto lookUp(const Table &table, std::string_view name) -> std::optional<decltype(table[0].second)> {
    for (const auto &[key, value] : table)
        if (key == name) return value;
    return std::nullopt;
}

const std::vector<OptionRule> kCallOptions{{"--result", {}, true}, {"--out", {}, true}, {"--table", {}, true},
                                           {"--argc", {}, true},   {"--no-init"},          {"--books"}};

void applyOptions(const ParsedOptions &parsed, CallRequest &request) {
    request.initialize = !parsed.has("--no-init");
    request.books = parsed.has("--books");
    if (auto value = parsed.value("--result")) {
        auto kind = findResultKind(*value);
        if (!kind) throw usageError("--result takes none, boolean, integer, real, string, image, raw-array or tensor, not '" + *value + "'");
        request.result = *kind;
    }
    if (auto value = parsed.value("--out")) {
        if (value->empty()) throw usageError("--out needs a file name");
        request.outPath = *value;
    }
    if (auto value = parsed.value("--table")) {
        auto table = lookUp(kTables, *value);
        if (!table) throw usageError("--table takes full, no-images or no-raw-arrays, not '" + *value + "'");
        request.table = *table;
    }
    if (auto value = parsed.value("--argc")) {
        auto count = parseInt64(*value);
        if (!count || *count < 0) throw usageError("--argc takes a count of at least 0, not '" + *value + "'");
        request.argc = *count;
    }
}

void checkLinkRequest(const CallRequest &request, bool resultGiven) {
    if (resultGiven || request.argc || request.outPath)
        throw usageError(request.exportName + " answers over a link: --result, --argc and --out do not apply");
    if (request.arguments.size() != 1)
        throw usageError(request.exportName + " takes one expression, such as '{\"file.gif\"}'");
}

}  // namespace

bool isLinkExport(std::string_view name) {
    for (std::string_view link : kLinkExports)
        if (link == name) return true;
    return false;
}

std::optional<RhKind> defaultResultKind(std::string_view name) { return lookUp(kDefaultResults, name); }

bool takesStringAt(std::string_view name, std::size_t position) {
    const auto slots = lookUp(kStringSlots, name);
    return slots && std::ranges::find(*slots, position) != slots->end();
}

std::optional<RhKind> findResultKind(std::string_view name) { return lookUp(kResultKinds, name); }

CallRequest parseCallRequest(const std::vector<std::string> &args) {
    const ParsedOptions parsed = readOptions("call", args, kCallOptions);
    if (parsed.operands().empty()) throw usageError("call needs the name of an export; see tarvex call --help");
    CallRequest request;
    applyOptions(parsed, request);
    const bool resultGiven = parsed.has("--result");
    request.exportName = parsed.operands().front();
    request.arguments.assign(parsed.operands().begin() + 1, parsed.operands().end());
    if (!request.initialize && request.table != RH_TABLE_FULL)
        throw usageError("--no-init and --table exclude each other");
    request.linkExport = isLinkExport(request.exportName);
    if (request.linkExport) {
        checkLinkRequest(request, resultGiven);
    } else if (!resultGiven) {
        auto kind = defaultResultKind(request.exportName);
        if (!kind)
            throw usageError("unknown export '" + request.exportName + "'; give --result KIND to call it anyway");
        request.result = *kind;
    }
    if (request.outPath && request.result != RH_IMAGE && request.result != RH_RAW_ARRAY && request.result != RH_TENSOR)
        throw usageError("--out saves image, raw-array and tensor results only");
    return request;
}

}  // namespace tarvex_cli
