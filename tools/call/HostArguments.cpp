#include "HostArguments.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "BinaryFiles.h"
#include "Command.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "KeyValues.h"
#include "NumberText.h"
#include "TypeNames.h"
#include "host/MemoryBudget.h"

namespace tarvex_cli {
namespace {

template <typename... Ts>
struct Overloaded : Ts... {
    using Ts::operator()...;
};
template <typename... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

// The bytes of the elements, read from the file if they live there; fills
// in the one dimension that a file without dims= implies.
std::vector<std::byte> elementBytes(const ArrayElements &elements, std::size_t elementSize,
                                    std::vector<mint> &dimensions) {
    dimensions = elements.dimensions;
    if (!elements.file) return elements.inlineBytes;
    const std::string &path = *elements.file;
    if (!dimensions.empty()) {
        // One byte more than the dimensions need is enough to tell a longer file.
        const std::size_t needed = checkedByteCount(dimensions, elementSize);
        std::vector<std::byte> bytes = readFileBytes(path, needed + 1);
        if (bytes.size() != needed)
            throw usageError(path + " " + heldBytes(bytes.size(), needed) + ", but the dimensions need " +
                             std::to_string(needed));
        return bytes;
    }
    // Without dimensions the file's length gives them, so only the memory
    // budget bounds the read (the file may be /dev/zero).
    const std::size_t budget = std::min<std::uint64_t>(OstrelUtils::memoryBudget(), SIZE_MAX - 1);
    std::vector<std::byte> bytes = readFileBytes(path, budget + 1);
    if (bytes.size() > budget)
        throw usageError(path + " " + heldBytes(bytes.size(), budget) +
                         ", more than the memory budget (TARVEX_MEMORY_BUDGET)");
    if (bytes.size() % elementSize != 0)
        throw usageError(path + " holds " + countOf(long(bytes.size()), "byte") + ", not a whole number of " +
                         std::to_string(elementSize) + "-byte elements");
    dimensions = {static_cast<mint>(bytes.size() / elementSize)};
    return bytes;
}

CliError creationFailed(const char *what, int code) {
    return CliError(std::string("the host could not make ") + what + " (code " + std::to_string(code) + ")");
}

MRawArray makeRawArray(const RawArrayValue &array) {
    std::vector<mint> dimensions;
    const std::vector<std::byte> bytes = elementBytes(array.elements, rawElementType(array.type).size(), dimensions);
    const QuorbelRawArrayFunctions functions = hostTable()->rawArrayFunctions;
    MRawArray handle = nullptr;
    int code = functions->create(array.type, static_cast<mint>(dimensions.size()), dimensions.data(), &handle);
    if (code != 0) throw creationFailed("a raw array", code);
    if (!bytes.empty()) std::memcpy(functions->getData(handle), bytes.data(), bytes.size());
    return handle;
}

MTensor makeTensor(const TensorValue &tensor) {
    std::vector<mint> dimensions;
    const std::vector<std::byte> bytes = elementBytes(tensor.elements, 8, dimensions);
    const QuorbelLibraryData table = hostTable();
    MTensor handle = nullptr;
    int code = table->tensorNew(tensor.type, static_cast<mint>(dimensions.size()), dimensions.data(), &handle);
    if (code != 0) throw creationFailed("a tensor", code);
    void *data = tensor.type == MTensor_Type_Integer ? static_cast<void *>(table->tensorGetIntegerData(handle))
                                                     : static_cast<void *>(table->tensorGetRealData(handle));
    if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
    return handle;
}

RhValue value(RhKind kind) {
    RhValue made{};
    made.kind = kind;
    return made;
}

const void *handleOf(const RhValue &made) {
    switch (made.kind) {
    case RH_IMAGE: return made.value.image;
    case RH_RAW_ARRAY: return made.value.rawArray;
    case RH_TENSOR: return made.value.tensor;
    default: return nullptr;
    }
}

// Frees one object unless it is gone already; says so when it is.
bool freeIfLive(const RhValue &made) {
    const QuorbelLibraryData table = hostTable();
    switch (made.kind) {
    case RH_IMAGE:
        if (!rh_image_is_live(made.value.image)) return false;
        table->imageFunctions->free(made.value.image);
        return true;
    case RH_RAW_ARRAY:
        if (!rh_raw_array_is_live(made.value.rawArray)) return false;
        table->rawArrayFunctions->free(made.value.rawArray);
        return true;
    case RH_TENSOR:
        if (!rh_tensor_is_live(made.value.tensor)) return false;
        table->tensorFree(made.value.tensor);
        return true;
    default: return true;
    }
}

}  // namespace

HostArguments::HostArguments(const std::vector<Argument> &arguments) : strings_(arguments.size()) {
    values_.reserve(arguments.size());
    try {
        for (std::size_t i = 0; i < arguments.size(); ++i) values_.push_back(make(arguments[i], strings_[i]));
    } catch (...) {
        release();
        throw;
    }
}

HostArguments::~HostArguments() { release(); }

std::vector<RhValue> HostArguments::slots(std::size_t count) const {
    std::vector<RhValue> passed(values_.begin(), values_.begin() + std::min(count, values_.size()));
    passed.resize(count, value(RH_NONE));
    return passed;
}

RhValue HostArguments::make(const Argument &argument, std::string &stringStorage) {
    return std::visit(Overloaded{
                          [](mint integer) {
                              RhValue made = value(RH_INTEGER);
                              made.value.integer = integer;
                              return made;
                          },
                          [](mreal real) {
                              RhValue made = value(RH_REAL);
                              made.value.real = real;
                              return made;
                          },
                          [](bool boolean) {
                              RhValue made = value(RH_BOOLEAN);
                              made.value.boolean = boolean ? QUORBEL_TRUE : QUORBEL_FALSE;
                              return made;
                          },
                          [&stringStorage](const StringValue &string) {
                              stringStorage = string.bytes;
                              RhValue made = value(RH_STRING);
                              made.value.string = stringStorage.c_str();
                              return made;
                          },
                          [](const PngImage &png) {
                              RhValue made = value(RH_IMAGE);
                              made.value.image = readImageFile(png.path);
                              return made;
                          },
                          [](const RawImage &raw) {
                              RhValue made = value(RH_IMAGE);
                              made.value.image = readRawImage(raw.path, raw.layout);
                              return made;
                          },
                          [](const RawArrayValue &array) {
                              RhValue made = value(RH_RAW_ARRAY);
                              made.value.rawArray = makeRawArray(array);
                              return made;
                          },
                          [](const TensorValue &tensor) {
                              RhValue made = value(RH_TENSOR);
                              made.value.tensor = makeTensor(tensor);
                              return made;
                          },
                      },
                      argument);
}

std::size_t HostArguments::positionOf(const void *handle) const {
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (handle != nullptr && handleOf(values_[i]) == handle) return i + 1;
    return 0;
}

std::vector<std::string> HostArguments::release() {
    std::vector<std::string> notes;
    for (std::size_t i = 0; i < values_.size(); ++i)
        if (!freeIfLive(values_[i])) notes.push_back("argument " + std::to_string(i + 1) + " was freed by the plug-in");
    values_.clear();
    return notes;
}

}  // namespace tarvex_cli
