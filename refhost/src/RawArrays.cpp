// Raw arrays: n-dimensional arrays of one of twelve element types.

#include <memory>
#include <new>
#include <vector>

#include "Books.h"
#include "Faults.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

struct RawArrayObject {
    MRawArray_Data_Type type = MRawArray_Type_Undefined;
    std::vector<mint> dimensions;
    mint flattenedLength = 0;
    std::unique_ptr<std::byte[]> data;
};

Registry<RawArrayObject> &rawArrays() {
    static Registry<RawArrayObject> live;
    return live;
}

int create(MRawArray_Data_Type type, mint rank, const mint *dimensions, MRawArray *result) {
    if (const int code = takeCreationFault(Creation::RawArray)) return code;
    if (result == nullptr) return QUORBEL_FUNCTION_ERROR;
    const std::size_t elementSize = rh_raw_array_element_size(type);
    if (elementSize == 0) return QUORBEL_TYPE_ERROR;
    if (rank < 1) return QUORBEL_RANK_ERROR;
    if (dimensions == nullptr) return QUORBEL_DIMENSION_ERROR;
    auto array = std::make_unique<RawArrayObject>();
    array->type = type;
    std::size_t bytes = elementSize;
    for (mint i = 0; i < rank; ++i) {
        if (dimensions[i] < 1) return QUORBEL_DIMENSION_ERROR;
        const auto grown = checkedProduct({bytes, std::size_t(dimensions[i])});
        if (!grown) return QUORBEL_MEMORY_ERROR;
        bytes = *grown;
        array->dimensions.push_back(dimensions[i]);
    }
    array->flattenedLength = static_cast<mint>(bytes / elementSize);
    array->data.reset(new (std::nothrow) std::byte[bytes]());
    if (array->data == nullptr) return QUORBEL_MEMORY_ERROR;
    *result = static_cast<MRawArray>(const_cast<void *>(rawArrays().add(std::move(array))));
    return QUORBEL_NO_ERROR;
}

void freeArray(MRawArray array) { rawArrays().remove(array); }

template <class Answer, class Read>
Answer query(MRawArray array, Answer neutral, Read read) {
    const RawArrayObject *object = rawArrays().find(array);
    return object != nullptr ? read(*object) : neutral;
}

MRawArray_Data_Type getType(MRawArray array) {
    return query(array, MRawArray_Type_Undefined, [](const RawArrayObject &a) { return a.type; });
}
mint getRank(MRawArray array) {
    return query(array, mint{0},
                 [](const RawArrayObject &a) { return static_cast<mint>(a.dimensions.size()); });
}
const mint *getDimensions(MRawArray array) {
    return query(array, static_cast<const mint *>(nullptr),
                 [](const RawArrayObject &a) { return a.dimensions.data(); });
}
mint getFlattenedLength(MRawArray array) {
    return query(array, mint{0}, [](const RawArrayObject &a) { return a.flattenedLength; });
}
void *getData(MRawArray array) {
    return query(array, static_cast<void *>(nullptr),
                 [](const RawArrayObject &a) { return static_cast<void *>(a.data.get()); });
}

}  // namespace

const st_QuorbelRawArrayFunctions &rawArrayFunctions() {
    static const st_QuorbelRawArrayFunctions table{
        create, freeArray, getType, getRank, getDimensions, getFlattenedLength, getData};
    return table;
}

long liveRawArrayCount() { return rawArrays().size(); }

}  // namespace refhost

extern "C" {

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
