#include "ResultFiles.h"

#include <filesystem>

#include "BinaryFiles.h"
#include "HostTable.h"
#include "ImageFiles.h"
#include "KeyValues.h"
#include "RawSampleFile.h"
#include "ResultText.h"
#include "TypeNames.h"

namespace tarvex_cli {
namespace {

bool fitsPng(const RawImageLayout &layout) {
    return (layout.type == MImage_Type_Bit8 || layout.type == MImage_Type_Bit16) && layout.channels >= 1 &&
           layout.channels <= 4 && (!layout.planar || layout.channels == 1);
}

std::string formatDimensionsAsOption(const std::vector<mint> &dimensions) {
    std::string text;
    for (std::size_t i = 0; i < dimensions.size(); ++i)
        text.append(i ? "x" : "").append(std::to_string(dimensions[i]));
    return text;
}

// A .raw name asks for raw samples even when PNG could hold the image.
bool asksForRawSamples(const std::string &path) { return std::filesystem::path(path).extension() == ".raw"; }

}  // namespace

std::string numberedPath(const std::string &path, mint number) {
    const std::filesystem::path original(path);
    std::filesystem::path numbered = original;
    numbered.replace_filename(original.stem().string() + "-" + std::to_string(number) +
                              original.extension().string());
    return numbered.string();
}

std::vector<std::string> saveImage(MImage image, const std::string &path) {
    const RawImageLayout layout = layoutOf(image);
    if (!fitsPng(layout) || asksForRawSamples(path)) {
        writeRawImage(image, path);
        return {path + " (raw samples; read back with raw-image:" + path + ":" + formatRawImageLayout(layout) + ")"};
    }
    if (layout.slices == 0) {
        writePng(image, 0, path);
        return {path + " (read back with png:" + path + ")"};
    }
    std::vector<std::string> written;
    for (mint slice = 0; slice < layout.slices; ++slice) {
        const std::string slicePath = numberedPath(path, slice + 1);
        writePng(image, slice, slicePath);
        written.push_back(slicePath + " (slice " + std::to_string(slice + 1) + ")");
    }
    return written;
}

std::string saveRawArray(MRawArray array, const std::string &path) {
    const QuorbelRawArrayFunctions functions = hostTable()->rawArrayFunctions;
    const RawElementType &type = rawElementType(functions->getType(array));
    const std::vector<mint> dimensions = rawArrayDimensions(array);
    writeFileBytes(path, functions->getData(array), checkedByteCount(dimensions, type.size()));
    return path + " (read back with raw:" + type.shortName + ":@" + path + ":dims=" +
           formatDimensionsAsOption(dimensions) + ")";
}

std::string saveTensor(MTensor tensor, const std::string &path) {
    const QuorbelLibraryData table = hostTable();
    const bool integer = table->tensorGetType(tensor) == MTensor_Type_Integer;
    const std::vector<mint> dimensions = tensorDimensions(tensor);
    const void *data = integer ? static_cast<const void *>(table->tensorGetIntegerData(tensor))
                               : static_cast<const void *>(table->tensorGetRealData(tensor));
    writeFileBytes(path, data, checkedByteCount(dimensions, 8));
    return path + " (read back with tensor:" + (integer ? "int" : "real") + ":@" + path +
           ":dims=" + formatDimensionsAsOption(dimensions) + ")";
}

}  // namespace tarvex_cli
