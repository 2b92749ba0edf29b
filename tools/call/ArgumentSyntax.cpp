#include "ArgumentSyntax.h"

#include <stdexcept>

#include "Escapes.h"
#include "KeyValues.h"
#include "NestedList.h"
#include "NumberText.h"
#include "TypeNames.h"

namespace tarvex_cli {
namespace {

std::invalid_argument invalid(const std::string &message) { return std::invalid_argument(message); }

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

std::optional<bool> parseBoolean(std::string_view text) {
    if (text == "true" || text == "True" || text == "1") return true;
    if (text == "false" || text == "False" || text == "0") return false;
    return std::nullopt;
}

mint integerValue(std::string_view text) {
    auto value = parseInt64(text);
    if (!value) throw invalid("'" + std::string(text) + "' is not a whole number within 64 bits");
    return *value;
}

mreal realValue(std::string_view text) {
    auto value = parseReal(text);
    if (!value) throw invalid("'" + std::string(text) + "' is not a real number");
    return *value;
}

bool booleanValue(std::string_view text) {
    auto value = parseBoolean(text);
    if (!value) throw invalid("'" + std::string(text) + "' is not a boolean (true or false)");
    return *value;
}

PngImage pngImage(std::string_view path) {
    if (path.empty()) throw invalid("png: needs a file name");
    return {std::string(path)};
}

// The options follow the last colon, so that file names may hold colons.
RawImage rawImage(std::string_view text) {
    std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos || colon == 0)
        throw invalid("write raw-image:FILE:type=T,width=W,height=H[,...]");
    RawImage image{std::string(text.substr(0, colon)), parseRawImageLayout(text.substr(colon + 1))};
    rawImageByteCount(image.layout);  // refuses absurd sizes now rather than at the call
    return image;
}

// "@FILE" or "@FILE:dims=2x3".
ArrayElements fileElements(std::string_view text, std::size_t elementSize) {
    text.remove_prefix(1);
    ArrayElements elements;
    std::size_t colon = text.rfind(':');
    if (colon != std::string_view::npos && text.substr(colon + 1).find('=') != std::string_view::npos) {
        for (const KeyValue &option : splitKeyValues(text.substr(colon + 1))) {
            if (option.key != "dims") throw invalid("unknown option '" + option.key + "' (only dims=AxB... is known)");
            elements.dimensions = parseDimensions(option.value);
        }
        text = text.substr(0, colon);
        checkedByteCount(elements.dimensions, elementSize);
    }
    if (text.empty()) throw invalid("@ needs a file name");
    elements.file = std::string(text);
    return elements;
}

template <typename AppendElement>
ArrayElements inlineElements(std::string_view text, AppendElement append) {
    NestedList list = parseNestedList(text);
    ArrayElements elements;
    elements.dimensions = std::move(list.dimensions);
    for (const std::string &token : list.elements) append(token, elements.inlineBytes);
    return elements;
}

template <typename AppendElement>
ArrayElements arrayElements(std::string_view text, std::size_t elementSize, std::string_view form,
                            AppendElement append) {
    if (startsWith(text, "{")) return inlineElements(text, append);
    if (startsWith(text, "@")) return fileElements(text, elementSize);
    throw invalid("after " + std::string(form) + " comes a list {...} or @FILE[:dims=AxB...]");
}

// raw:TYPE:{...} or raw:TYPE:@FILE[:dims=...]
RawArrayValue rawArray(std::string_view text) {
    std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) throw invalid("write raw:TYPE:{...} or raw:TYPE:@FILE[:dims=AxB...]");
    auto type = findRawElementType(text.substr(0, colon));
    if (!type) throw invalid("unknown raw-array element type '" + std::string(text.substr(0, colon)) + "'");
    auto append = [id = type->id](std::string_view token, std::vector<std::byte> &out) { appendElement(id, token, out); };
    return {type->id, arrayElements(text.substr(colon + 1), type->size(), "raw:" + std::string(type->shortName) + ":", append)};
}

// tensor:int:{...}, tensor:real:@FILE[:dims=...]
TensorValue tensor(std::string_view text) {
    std::size_t colon = text.find(':');
    std::string_view typeName = text.substr(0, colon);
    MTensor_Data_Type type;
    if (typeName == "int" || typeName == "integer") type = MTensor_Type_Integer;
    else if (typeName == "real") type = MTensor_Type_Real;
    else throw invalid("a tensor is tensor:int:... or tensor:real:...");
    if (colon == std::string_view::npos) throw invalid("write tensor:" + std::string(typeName) + ":{...} or @FILE");
    auto append = [type](std::string_view token, std::vector<std::byte> &out) { appendTensorElement(type, token, out); };
    return {type, arrayElements(text.substr(colon + 1), 8, "tensor:" + std::string(typeName) + ":", append)};
}

bool hasDigit(std::string_view text) { return text.find_first_of("0123456789") != std::string_view::npos; }

Argument bareArgument(std::string_view text) {
    if (text == "true" || text == "True") return true;
    if (text == "false" || text == "False") return false;
    if (auto integer = parseInt64(text)) return static_cast<mint>(*integer);
    if (auto real = parseReal(text); real && hasDigit(text)) return *real;
    throw invalid("not a value; strings are written str:TEXT (see tarvex call --help)");
}

}  // namespace

Argument parseArgument(std::string_view text) {
    if (startsWith(text, "int:")) return integerValue(text.substr(4));
    if (startsWith(text, "real:")) return realValue(text.substr(5));
    if (startsWith(text, "bool:")) return booleanValue(text.substr(5));
    if (startsWith(text, "str:")) return StringValue{decodeEscapes(text.substr(4))};
    if (startsWith(text, "png:")) return pngImage(text.substr(4));
    if (startsWith(text, "raw-image:")) return rawImage(text.substr(10));
    if (startsWith(text, "raw:")) return rawArray(text.substr(4));
    if (startsWith(text, "tensor:")) return tensor(text.substr(7));
    return bareArgument(text);
}

const char *const kArgumentSyntaxHelp = R"(Arguments:
  int:N                  an integer (64-bit)
  real:X                 a real (1.5, -2, 1e-3, inf, nan)
  bool:true|false        a boolean (also 1, 0, True, False)
  str:TEXT               a string; C escapes \n \t \\ \" \xHH \NNN (octal)
                         and \| for the list separator (bytes 2 7 7 7 3);
                         a NUL byte cannot be passed
  png:FILE               an image from a PNG file: 8 or 16 bits, 1 to 4
                         interleaved channels (palette files become RGB/RGBA)
  raw-image:FILE:OPTIONS an image from a raw sample file (see below)
  raw:TYPE:{...}         a raw array given as a nested list, e.g.
                         raw:uint8:{{255,0,0},{0,0,255}}; complex elements are
                         written RE+IMi (1.5-2i, 3i)
  raw:TYPE:@FILE[:dims=AxB...]
                         a raw array from a file of native-order elements;
                         without dims, one dimension from the file's size
  tensor:int:{...}       an integer tensor; also tensor:real:{...},
  tensor:int:@FILE[:dims=AxB...]  with 64-bit integers or doubles in the file
  5  -3  0.5  1e-3  true  false
                         bare numbers and booleans are integers, reals and
                         booleans

  Raw-array TYPEs: int8 uint8 int16 uint16 int32 uint32 int64 uint64 real32
  real64 complex-real32 complex-real64 (or the kernel's names, such as
  UnsignedInteger8, or the type numbers 1 to 12).

  Raw sample files hold the samples only, in native byte order, 1-bit images
  one byte (0 or 1) per sample; interleaved: slices x rows x columns x
  channels, planar: slices x channels x rows x columns. OPTIONS:
    type=bit|byte|bit16|real32|real64   width=W   height=H   (required)
    channels=C (1)   slices=S (a 3-D image; default 2-D)   planar   alpha
    cs=gray|rgb|hsb|cmyk|xyz|luv|lab|lch|auto|N  (default from the channels
    without alpha: 1 gray, 3 rgb, 4 cmyk, otherwise auto)
)";

}  // namespace tarvex_cli
