// Argument-vector calls, laid out the way the kernel lays them out.

#include <cstring>
#include <vector>

#include "Objects.h"
#include "Plugins.h"

namespace refhost {
namespace {

// The storage behind one MArgument: wide and aligned enough for any member.
struct alignas(16) Cell {
    unsigned char bytes[16];
};

// A result cell starts out as this pattern so that a write is detectable;
// no value a plug-in would write has all its bytes equal to it.
constexpr unsigned char untouched = 0xA5;

MArgument pointInto(Cell &cell) {
    MArgument argument;
    // Every member aliases the cell, as in the kernel: an export that reads the
    // wrong member gets wrong bits, not a crash.
    argument.integer = reinterpret_cast<mint *>(cell.bytes);
    return argument;
}

template <class T>
void store(Cell &cell, T value) {
    std::memcpy(cell.bytes, &value, sizeof value);
}

template <class T>
T load(const Cell &cell) {
    T value;
    std::memcpy(&value, cell.bytes, sizeof value);
    return value;
}

void fill(Cell &cell, const RhValue &argument) {
    std::memset(cell.bytes, 0, sizeof cell.bytes);
    switch (argument.kind) {
    case RH_BOOLEAN: store(cell, argument.value.boolean); break;
    case RH_INTEGER: store(cell, argument.value.integer); break;
    case RH_REAL: store(cell, argument.value.real); break;
    case RH_STRING:
        store(cell, issueString(argument.value.string != nullptr ? argument.value.string : ""));
        break;
    case RH_IMAGE: store(cell, argument.value.image); break;
    case RH_RAW_ARRAY: store(cell, argument.value.rawArray); break;
    case RH_TENSOR: store(cell, argument.value.tensor); break;
    case RH_NONE: break;
    }
}

void readResult(const Cell &cell, RhValue &result) {
    switch (result.kind) {
    case RH_BOOLEAN: result.value.boolean = load<mbool>(cell); break;
    case RH_INTEGER: result.value.integer = load<mint>(cell); break;
    case RH_REAL: result.value.real = load<mreal>(cell); break;
    case RH_STRING: result.value.string = load<const char *>(cell); break;
    case RH_IMAGE: result.value.image = load<MImage>(cell); break;
    case RH_RAW_ARRAY: result.value.rawArray = load<MRawArray>(cell); break;
    case RH_TENSOR: result.value.tensor = load<MTensor>(cell); break;
    case RH_NONE: break;
    }
}

}  // namespace
}  // namespace refhost

extern "C" int rh_call(RhPlugin *plugin, const char *name, mint argc, const RhValue *args,
                       RhValue *result) {
    using namespace refhost;
    auto export_ = reinterpret_cast<QuorbelArgumentFunction>(rh_plugin_symbol(plugin, name));
    if (export_ == nullptr) return -1000;
    if (argc < 0 || (argc > 0 && args == nullptr)) return QUORBEL_FUNCTION_ERROR;

    std::vector<Cell> cells(static_cast<std::size_t>(argc) + 1);
    std::vector<MArgument> arguments;
    for (mint i = 0; i < argc; ++i) {
        fill(cells[i], args[i]);
        arguments.push_back(pointInto(cells[i]));
    }
    Cell &resultCell = cells.back();
    std::memset(resultCell.bytes, untouched, sizeof resultCell.bytes);
    const Cell before = resultCell;

    const int code = export_(callTable(plugin), argc, arguments.data(), pointInto(resultCell));

    if (result != nullptr) {
        result->written = std::memcmp(before.bytes, resultCell.bytes, sizeof before.bytes) != 0;
        std::memset(&result->value, 0, sizeof result->value);
        if (result->written) readResult(resultCell, *result);
    }
    return code;
}
