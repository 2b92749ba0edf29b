// Tensors: integer or real arrays of any rank. A dimension may be 0, because
// an empty vector is a legitimate answer (a GIF without a global palette).

#include <memory>
#include <new>
#include <vector>

#include "Books.h"
#include "Faults.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

struct TensorObject {
    MTensor_Data_Type type = MTensor_Type_Integer;
    std::vector<mint> dimensions;
    mint flattenedLength = 0;
    // mint and mreal are both eight bytes; one buffer serves either type.
    std::unique_ptr<std::byte[]> data;
};

Registry<TensorObject> &tensors() {
    static Registry<TensorObject> live;
    return live;
}

int create(MTensor_Data_Type type, mint rank, const mint *dimensions, MTensor *result) {
    if (const int code = takeCreationFault(Creation::Tensor)) return code;
    if (result == nullptr) return QUORBEL_FUNCTION_ERROR;
    if (type != MTensor_Type_Integer && type != MTensor_Type_Real) return QUORBEL_TYPE_ERROR;
    if (rank < 0) return QUORBEL_RANK_ERROR;
    if (rank > 0 && dimensions == nullptr) return QUORBEL_DIMENSION_ERROR;
    auto tensor = std::make_unique<TensorObject>();
    tensor->type = type;
    std::size_t length = 1;
    for (mint i = 0; i < rank; ++i) {
        if (dimensions[i] < 0) return QUORBEL_DIMENSION_ERROR;
        const auto grown = checkedProduct({length, std::size_t(dimensions[i]), sizeof(mint)});
        if (!grown) return QUORBEL_MEMORY_ERROR;
        length *= std::size_t(dimensions[i]);
        tensor->dimensions.push_back(dimensions[i]);
    }
    tensor->flattenedLength = static_cast<mint>(length);
    tensor->data.reset(new (std::nothrow) std::byte[length * sizeof(mint)]());
    if (tensor->data == nullptr) return QUORBEL_MEMORY_ERROR;
    *result = static_cast<MTensor>(const_cast<void *>(tensors().add(std::move(tensor))));
    return QUORBEL_NO_ERROR;
}

void freeTensor(MTensor tensor) { tensors().remove(tensor); }

template <class Answer, class Read>
Answer query(MTensor tensor, Answer neutral, Read read) {
    const TensorObject *object = tensors().find(tensor);
    return object != nullptr ? read(*object) : neutral;
}

mint getRank(MTensor tensor) {
    return query(tensor, mint{0},
                 [](const TensorObject &t) { return static_cast<mint>(t.dimensions.size()); });
}
const mint *getDimensions(MTensor tensor) {
    return query(tensor, static_cast<const mint *>(nullptr),
                 [](const TensorObject &t) { return t.dimensions.data(); });
}
mint getFlattenedLength(MTensor tensor) {
    return query(tensor, mint{0}, [](const TensorObject &t) { return t.flattenedLength; });
}
// An unknown handle also reads as an integer tensor: the enumeration has no
// neutral value, and its data queries answer null anyway.
MTensor_Data_Type getType(MTensor tensor) {
    return query(tensor, MTensor_Type_Integer, [](const TensorObject &t) { return t.type; });
}
// Data of the other type is refused rather than reinterpreted.
mint *getIntegerData(MTensor tensor) {
    return query(tensor, static_cast<mint *>(nullptr), [](const TensorObject &t) {
        return t.type == MTensor_Type_Integer ? reinterpret_cast<mint *>(t.data.get()) : nullptr;
    });
}
mreal *getRealData(MTensor tensor) {
    return query(tensor, static_cast<mreal *>(nullptr), [](const TensorObject &t) {
        return t.type == MTensor_Type_Real ? reinterpret_cast<mreal *>(t.data.get()) : nullptr;
    });
}

}  // namespace

void addTensorFunctions(st_QuorbelLibraryData &table) {
    table.tensorNew = create;
    table.tensorFree = freeTensor;
    table.tensorGetRank = getRank;
    table.tensorGetDimensions = getDimensions;
    table.tensorGetFlattenedLength = getFlattenedLength;
    table.tensorGetType = getType;
    table.tensorGetIntegerData = getIntegerData;
    table.tensorGetRealData = getRealData;
}

long liveTensorCount() { return tensors().size(); }

}  // namespace refhost

extern "C" mbool rh_tensor_is_live(MTensor tensor) { return refhost::tensors().contains(tensor); }
