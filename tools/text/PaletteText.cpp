#include "PaletteText.h"

#include <cstdio>
#include <cstring>

#include "HostTable.h"
#include "TypeNames.h"

namespace tarvex_cli {
namespace {

std::string colorLine(MRawArray_Data_Type type, const std::byte *row, mint channels, std::size_t elementSize) {
    std::string line;
    if (type == MRawArray_Type_UBit8) {
        line = "#";
        for (mint k = 0; k < channels; ++k) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02x", static_cast<unsigned>(row[k]));
            line += hex;
        }
        return line;
    }
    for (mint k = 0; k < channels; ++k) {
        if (k > 0) line += ',';
        line += formatElement(type, row + std::size_t(k) * elementSize);
    }
    return line;
}

}  // namespace

std::string paletteText(MRawArray palette) {
    const QuorbelRawArrayFunctions arrays = hostTable()->rawArrayFunctions;
    const MRawArray_Data_Type type = arrays->getType(palette);
    const mint *dimensions = arrays->getDimensions(palette);
    const mint channels = dimensions[1];
    const std::size_t elementSize = rawElementType(type).size(), rowSize = elementSize * std::size_t(channels);
    const auto *data = static_cast<const std::byte *>(arrays->getData(palette));
    mint rows = dimensions[0];
    while (rows > 1 && std::memcmp(data + (rows - 1) * rowSize, data + (rows - 2) * rowSize, rowSize) == 0) --rows;
    std::string text;
    for (mint i = 0; i < rows; ++i) text += colorLine(type, data + std::size_t(i) * rowSize, channels, elementSize) + "\n";
    return text;
}

}  // namespace tarvex_cli
