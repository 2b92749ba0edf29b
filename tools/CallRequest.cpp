#include "CallRequest.h"

#include <array>
#include <utility>

#include "Command.h"
#include "NumberText.h"

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

// Options take their value as the next word or after '='.
class Words {
public:
    explicit Words(const std::vector<std::string> &words) : words_(words) {}

    bool done() const { return next_ >= words_.size(); }
    const std::string &take() { return words_[next_++]; }

    std::string valueOf(const std::string &option, std::string &name) {
        std::size_t equals = option.find('=');
        name = option.substr(0, equals);
        if (equals != std::string::npos) return option.substr(equals + 1);
        if (done()) throw usageError(name + " needs a value");
        return take();
    }

private:
    const std::vector<std::string> &words_;
    std::size_t next_ = 0;
};

template <typename Table>
auto lookUp(const Table &table, std::string_view name) -> std::optional<decltype(table[0].second)> {
    for (const auto &[key, value] : table)
        if (key == name) return value;
    return std::nullopt;
}

bool takesValue(std::string_view name) {
    return name == "--result" || name == "--out" || name == "--table" || name == "--argc";
}

void applyOption(const std::string &option, Words &words, CallRequest &request, bool &resultGiven) {
    std::string name = option.substr(0, option.find('='));
    if (!takesValue(name)) {
        if (name != option) throw usageError(name + " takes no value");
        if (option == "--no-init") request.initialize = false;
        else if (option == "--books") request.books = true;
        else throw usageError("unknown option '" + option + "' for call; see tarvex call --help");
        return;
    }
    const std::string value = words.valueOf(option, name);
    if (name == "--result") {
        auto kind = findResultKind(value);
        if (!kind) throw usageError("--result takes none, boolean, integer, real, string, image, raw-array or tensor, not '" + value + "'");
        request.result = *kind;
        resultGiven = true;
    } else if (name == "--out") {
        if (value.empty()) throw usageError("--out needs a file name");
        request.outPath = value;
    } else if (name == "--table") {
        auto table = lookUp(kTables, value);
        if (!table) throw usageError("--table takes full, no-images or no-raw-arrays, not '" + value + "'");
        request.table = *table;
    } else {
        auto count = parseInt64(value);
        if (!count || *count < 0) throw usageError("--argc takes a count of at least 0, not '" + value + "'");
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

std::optional<RhKind> findResultKind(std::string_view name) { return lookUp(kResultKinds, name); }

CallRequest parseCallRequest(const std::vector<std::string> &args) {
    CallRequest request;
    Words words(args);
    bool resultGiven = false;
    bool optionsEnded = false;
    bool haveExport = false;
    while (!words.done()) {
        const std::string &word = words.take();
        if (!optionsEnded && word == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && word.rfind("--", 0) == 0) {
            applyOption(word, words, request, resultGiven);
        } else if (!haveExport) {
            request.exportName = word;
            haveExport = true;
        } else {
            request.arguments.push_back(word);
        }
    }
    if (!haveExport) throw usageError("call needs the name of an export; see tarvex call --help");
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
