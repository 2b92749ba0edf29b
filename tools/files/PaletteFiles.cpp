#include "PaletteFiles.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>

#include "BinaryFiles.h"
#include "Command.h"
#include "FileAccess.h"
#include "GifFacts.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "NamedPalettes.h"
#include "NumberText.h"

namespace tarvex_cli {
namespace {

constexpr std::size_t kMostColors = 65536;
// Far more than 65,536 colours take as text; only the kind of a longer file,
// an image's, matters here.
constexpr std::size_t kMostTextBytes = std::size_t{64} << 20;

enum class FileKind { Image, Gif, Text, Other };

FileKind kindOf(const std::vector<std::byte> &bytes) {
    const auto startsWith = [&](std::string_view magic) {
        return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
    };
    if (startsWith("\x89PNG\r\n\x1a\n") || startsWith("\xFF\xD8\xFF")) return FileKind::Image;
    if (startsWith("GIF87a") || startsWith("GIF89a")) return FileKind::Gif;
    for (std::byte b : bytes) {
        const auto c = static_cast<unsigned char>(b);
        if ((c < 0x20 && c != '\n' && c != '\r' && c != '\t') || c == 0x7f) return FileKind::Other;
    }
    return FileKind::Text;
}

// The distinct colours of an image, in order of first appearance.
std::vector<DitherColor> colorsOfImage(const std::string &path, const std::string &name) {
    MImage image = readImageFile(path);
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    const mint channels = images->getChannels(image);
    const std::size_t pixels = std::size_t(images->getRowCount(image)) * images->getColumnCount(image);
    const bool wide = images->getDataType(image) == MImage_Type_Bit16;
    const void *data = images->getRawData(image);
    const auto sample = [&](std::size_t i) -> double {
        return wide ? static_cast<const std::uint16_t *>(data)[i] : static_cast<const std::uint8_t *>(data)[i];
    };
    std::map<std::vector<double>, std::size_t> seen;
    std::vector<DitherColor> colors;
    for (std::size_t p = 0; p < pixels && colors.size() <= kMostColors; ++p) {
        DitherColor color{{}, wide ? 65535.0 : 255.0};
        for (mint k = 0; k < channels; ++k) color.values.push_back(sample(p * channels + k));
        if (seen.emplace(color.values, colors.size()).second) colors.push_back(std::move(color));
    }
    images->free(image);
    if (colors.size() > kMostColors)
        throw CliError(name + " has more than 65,536 colours, more than a palette holds; reduce them first "
                              "(tarvex quantize --palette-out FILE)");
    return colors;
}

std::vector<DitherColor> colorsOfRows(const std::vector<std::vector<long long>> &rows) {
    std::vector<DitherColor> colors;
    for (const auto &row : rows) colors.push_back({{double(row[0]), double(row[1]), double(row[2])}, 255});
    return colors;
}

// The global palette, or with a frame number the palette that frame draws
// with: its local one, else the global one.
std::vector<DitherColor> colorsOfGif(const std::string &path, const std::string &name, std::optional<long> frame) {
    const std::vector<std::vector<long long>> global = readGlobalPaletteRows(path);
    if (!frame) {
        if (global.empty()) throw CliError(name + " has no global palette; name a frame's palette as " + name + ":N");
        return colorsOfRows(global);
    }
    const ImportExpr locals = askGifReader("ReadPalettes", path);
    if (*frame < 1 || std::size_t(*frame) > rh_expr_length(locals.get()))
        throw CliError(name + " has no frame " + std::to_string(*frame));
    const RhExpr *local = rh_expr_part(locals.get(), std::size_t(*frame - 1));
    if (!isSymbol(local, "None")) return colorsOfRows(integerRows(local));
    if (global.empty()) throw CliError(name + " frame " + std::to_string(*frame) + " has no palette");
    return colorsOfRows(global);
}

std::vector<DitherColor> colorsOfTextFile(const std::vector<std::byte> &bytes, const std::string &name) {
    try {
        return parseColorLines(std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
    } catch (const std::invalid_argument &error) {
        throw CliError(name + ":" + error.what());
    }
}

std::vector<DitherColor> colorsOfFile(const std::string &name, std::optional<long> frame) {
    const std::string path = readablePath(name);
    const std::vector<std::byte> bytes = readFileBytes(path, kMostTextBytes + 1);
    const FileKind kind = kindOf(bytes);
    if (kind == FileKind::Text && bytes.size() > kMostTextBytes)
        throw CliError(name + " holds more than 64 MiB of text, too much for a list of colours");
    if (frame && kind != FileKind::Gif) throw CliError(name + " is not a GIF file; only GIF frames have palettes");
    switch (kind) {
    case FileKind::Image: return colorsOfImage(path, name);
    case FileKind::Gif: return colorsOfGif(path, name, frame);
    case FileKind::Text: return colorsOfTextFile(bytes, name);
    default: throw CliError(name + " is neither an image the tool reads nor a text file of colours");
    }
}

// "anim.gif:3" when anim.gif exists and 3 is a frame number.
std::optional<std::pair<std::string, long>> gifFrameReference(const std::string &argument) {
    const std::size_t colon = argument.rfind(':');
    if (colon == std::string::npos) return std::nullopt;
    const auto number = parseInt64(argument.substr(colon + 1));
    const std::string file = argument.substr(0, colon);
    std::error_code error;
    if (!number || !std::filesystem::exists(file, error)) return std::nullopt;
    return std::pair{file, static_cast<long>(*number)};
}

// A word that cannot be a list of colours and names a file that is not there.
bool looksLikePath(const std::string &argument) {
    return argument.find('/') != std::string::npos ||
           (argument.find('.') != std::string::npos && argument.find_first_of("#,;") == std::string::npos &&
            argument.find_first_not_of("0123456789. ") != std::string::npos);
}

}  // namespace

std::vector<DitherColor> readDitherPalette(const std::string &argument) {
    std::vector<DitherColor> colors;
    std::error_code error;
    if (auto named = namedPalette(argument)) {
        colors = *named;
    } else if (isStandardStream(argument) || std::filesystem::exists(argument, error)) {
        colors = colorsOfFile(argument, std::nullopt);
    } else if (auto frame = gifFrameReference(argument)) {
        colors = colorsOfFile(frame->first, frame->second);
    } else if (looksLikePath(argument)) {
        checkReadable(argument);
    } else {
        try {
            colors = parseDitherColors(argument);
        } catch (const std::invalid_argument &problem) {
            throw usageError("--palette: " + std::string(problem.what()) +
                             " (give colours such as \"#ff0000,#00ff00\" or \"255,0,0;0,255,0\", a palette name, "
                             "or a file)");
        }
    }
    if (colors.empty()) throw usageError("--palette: no colours in " + argument);
    return colors;
}

}  // namespace tarvex_cli
