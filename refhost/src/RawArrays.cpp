// Raw arrays: n-dimensional arrays of one of twelve element types.

#include <memory>

#include "Books.h"
#include "Faults.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

struct RawArrayObject : ArrayBlock {
    MRawArray_Data_Type type = MRawArray_Type_Undefined;
};

Registry<RawArrayObject> &rawArrays() { return registryOf<RawArrayObject>(); }

int createArray(MRawArray_Data_Type type, mint rank, const mint *dimensions, mint smallestDimension,
                MRawArray *result) {
    if (result == nullptr) return QUORBEL_FUNCTION_ERROR;
    const std::size_t elementSize = rh_raw_array_element_size(type);
    if (elementSize == 0) return QUORBEL_TYPE_ERROR;
    if (rank < 1) return QUORBEL_RANK_ERROR;
    auto array = std::make_unique<RawArrayObject>();
    array->type = type;
    return addArray(std::move(array), rank, dimensions, elementSize, smallestDimension, result);
}

// A plug-in cannot make an empty array, though the kernel can pass one.
int create(MRawArray_Data_Type type, mint rank, const mint *dimensions, MRawArray *result) {
    if (const int code = takeCreationFault(Creation::RawArray)) return code;
    return createArray(type, rank, dimensions, 1, result);
}

void freeArray(MRawArray array) { rawArrays().remove(array); }

MRawArray_Data_Type getType(MRawArray array) {
    return rawArrays().query(array, MRawArray_Type_Undefined, [](const RawArrayObject &a) { return a.type; });
}
void *getData(MRawArray array) { return rawArrays().query(array, static_cast<void *>(nullptr), dataOf); }

using Shape = BlockQueries<RawArrayObject, MRawArray>;

}  // namespace

const st_QuorbelRawArrayFunctions &rawArrayFunctions() {
    static const st_QuorbelRawArrayFunctions table{
        create, freeArray, getType, Shape::rank, Shape::dimensions, Shape::flattenedLength, getData};
    return table;
}

long liveRawArrayCount() { return rawArrays().size(); }

}  // namespace refhost

extern "C" {

int rh_raw_array_new(MRawArray_Data_Type type, mint rank, const mint *dimensions, MRawArray *result) {
    return refhost::createArray(type, rank, dimensions, 0, result);
}

size_t rh_raw_array_element_size(MRawArray_Data_Type type) {
    switch (type) {
    case MRawArray_Type_Bit8:
    case MRawArray_Type_UBit8: return 1;
    case MRawArray_Type_Bit16:
    case MRawArray_Type_UBit16: return 2;
    case MRawArray_Type_Bit32:
    case MRawArray_Type_UBit32:
    case MRawArray_Type_Real32: return 4;
    case MRawArray_Type_Bit64:
    case MRawArray_Type_UBit64:
    case MRawArray_Type_Real64:
    case MRawArray_Type_Complex_Real32: return 8;
    case MRawArray_Type_Complex_Real64: return 16;
    default: return 0;
    }
}

mbool rh_raw_array_is_live(MRawArray array) { return refhost::rawArrays().contains(array); }

}  // extern "C"
