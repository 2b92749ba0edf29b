#include "ResultText.h"

#include "HostTable.h"
#include "NestedList.h"
#include "TypeNames.h"

namespace tarvex_cli {
namespace {

std::string formatDimensions(const std::vector<mint> &dimensions) {
    std::string out = "{";
    for (std::size_t i = 0; i < dimensions.size(); ++i) out += (i ? ", " : "") + std::to_string(dimensions[i]);
    return out + "}";
}

const char *booleanName(mbool value) { return value ? "True" : "False"; }

const char *tensorTypeName(MTensor_Data_Type type) { return type == MTensor_Type_Integer ? "Integer" : "Real"; }

}  // namespace

std::vector<mint> rawArrayDimensions(MRawArray array) {
    const QuorbelRawArrayFunctions functions = hostTable()->rawArrayFunctions;
    const mint *dimensions = functions->getDimensions(array);
    return std::vector<mint>(dimensions, dimensions + functions->getRank(array));
}

std::vector<mint> tensorDimensions(MTensor tensor) {
    const QuorbelLibraryData table = hostTable();
    const mint *dimensions = table->tensorGetDimensions(tensor);
    return std::vector<mint>(dimensions, dimensions + table->tensorGetRank(tensor));
}

std::string formatRawArray(MRawArray array) {
    const QuorbelRawArrayFunctions functions = hostTable()->rawArrayFunctions;
    const RawElementType &type = rawElementType(functions->getType(array));
    const std::string elements =
        formatNestedList(rawArrayDimensions(array), functions->getData(array), type.size(),
                         [id = type.id](const void *element) { return formatElement(id, element); });
    return std::string("RawArray[\"") + type.kernelName + "\", " + elements + "]";
}

std::string summarizeRawArray(MRawArray array) {
    const RawElementType &type = rawElementType(hostTable()->rawArrayFunctions->getType(array));
    return std::string("RawArray[\"") + type.kernelName + "\", Dimensions -> " +
           formatDimensions(rawArrayDimensions(array)) + "]";
}

std::string formatTensor(MTensor tensor) {
    const QuorbelLibraryData table = hostTable();
    const MTensor_Data_Type type = table->tensorGetType(tensor);
    const void *data = type == MTensor_Type_Integer ? static_cast<const void *>(table->tensorGetIntegerData(tensor))
                                                    : static_cast<const void *>(table->tensorGetRealData(tensor));
    const std::string elements = formatNestedList(tensorDimensions(tensor), data, 8, [type](const void *element) {
        return formatTensorElement(type, element);
    });
    return std::string("Tensor[\"") + tensorTypeName(type) + "\", " + elements + "]";
}

std::string summarizeTensor(MTensor tensor) {
    return std::string("Tensor[\"") + tensorTypeName(hostTable()->tensorGetType(tensor)) + "\", Dimensions -> " +
           formatDimensions(tensorDimensions(tensor)) + "]";
}

std::string summarizeImage(MImage image) {
    const QuorbelImageFunctions images = hostTable()->imageFunctions;
    std::string out = "Image[{" + std::to_string(images->getColumnCount(image)) + ", " +
                      std::to_string(images->getRowCount(image)) + "}, \"" +
                      imageTypeName(images->getDataType(image)) + "\", ";
    if (images->getRank(image) == 3) out += "Slices -> " + std::to_string(images->getSliceCount(image)) + ", ";
    return out + "Channels -> " + std::to_string(images->getChannels(image)) + ", ColorSpace -> \"" +
           colorSpaceName(images->getColorSpace(image)) + "\", Interleaved -> " +
           booleanName(images->interleavedQ(image)) + ", Alpha -> " + booleanName(images->alphaChannelQ(image)) + "]";
}

}  // namespace tarvex_cli
