// Tensors: integer or real arrays of any rank. A dimension may be 0, because
// an empty vector is a legitimate answer (a GIF without a global palette).

#include <memory>

#include "Books.h"
#include "Faults.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

// mint and mreal are both eight bytes; one buffer serves either type.
struct TensorObject : ArrayBlock {
    MTensor_Data_Type type = MTensor_Type_Integer;
};

Registry<TensorObject> &tensors() { return registryOf<TensorObject>(); }

int create(MTensor_Data_Type type, mint rank, const mint *dimensions, MTensor *result) {
    if (const int code = takeCreationFault(Creation::Tensor)) return code;
    if (result == nullptr) return QUORBEL_FUNCTION_ERROR;
    if (type != MTensor_Type_Integer && type != MTensor_Type_Real) return QUORBEL_TYPE_ERROR;
    if (rank < 0) return QUORBEL_RANK_ERROR;
    auto tensor = std::make_unique<TensorObject>();
    tensor->type = type;
    return addArray(std::move(tensor), rank, dimensions, sizeof(mint), 0, result);
}

void freeTensor(MTensor tensor) { tensors().remove(tensor); }

using Shape = BlockQueries<TensorObject, MTensor>;

// An unknown handle also reads as an integer tensor: the enumeration has no
// neutral value, and its data queries answer null anyway.
MTensor_Data_Type getType(MTensor tensor) {
    return tensors().query(tensor, MTensor_Type_Integer, [](const TensorObject &t) { return t.type; });
}
// Data of the other type is refused rather than reinterpreted.
mint *getIntegerData(MTensor tensor) {
    return tensors().query(tensor, static_cast<mint *>(nullptr), [](const TensorObject &t) {
        return t.type == MTensor_Type_Integer ? reinterpret_cast<mint *>(t.data.get()) : nullptr;
    });
}
mreal *getRealData(MTensor tensor) {
    return tensors().query(tensor, static_cast<mreal *>(nullptr), [](const TensorObject &t) {
        return t.type == MTensor_Type_Real ? reinterpret_cast<mreal *>(t.data.get()) : nullptr;
    });
}

}  // namespace

void addTensorFunctions(st_QuorbelLibraryData &table) {
    table.tensorNew = create;
    table.tensorFree = freeTensor;
    table.tensorGetRank = Shape::rank;
    table.tensorGetDimensions = Shape::dimensions;
    table.tensorGetFlattenedLength = Shape::flattenedLength;
    table.tensorGetType = getType;
    table.tensorGetIntegerData = getIntegerData;
    table.tensorGetRealData = getRealData;
}

long liveTensorCount() { return tensors().size(); }

}  // namespace refhost

extern "C" mbool rh_tensor_is_live(MTensor tensor) { return refhost::tensors().contains(tensor); }
