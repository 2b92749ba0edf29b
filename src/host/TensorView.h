#pragma once

#include <cmath>
#include <span>

#include "host/LibraryData.h"
#include "host/OstrelError.h"
#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

// Read-only access to a tensor argument, which the kernel owns.
class TensorView {
public:
    explicit TensorView(MTensor tensor) : tensor_(tensor) {
        data_ = libraryData();
        if (data_ == nullptr) throw OstrelError(FunctionError);
        if (tensor_ == nullptr) throw OstrelError(FunctionError, "Missing tensor argument");
    }

    mint rank() const { return data_->tensorGetRank(tensor_); }
    mint length() const { return data_->tensorGetFlattenedLength(tensor_); }
    mint dimension(mint index) const {
        const mint *dims = data_->tensorGetDimensions(tensor_);
        if (dims == nullptr || index < 0 || index >= rank()) throw OstrelError(DimensionError);
        return dims[index];
    }
    bool isInteger() const { return data_->tensorGetType(tensor_) == MTensor_Type_Integer; }
    bool isReal() const { return data_->tensorGetType(tensor_) == MTensor_Type_Real; }

    std::span<const mint> integers() const {
        const mint *values = data_->tensorGetIntegerData(tensor_);
        if (values == nullptr) throw OstrelError(FunctionError, "Not an integer tensor");
        return {values, static_cast<std::size_t>(length())};
    }
    std::span<const mreal> reals() const {
        const mreal *values = data_->tensorGetRealData(tensor_);
        if (values == nullptr) throw OstrelError(FunctionError, "Not a real tensor");
        return {values, static_cast<std::size_t>(length())};
    }

    // Element `index` as an integer whatever the tensor's type: reals are
    // truncated, and a real no integer can hold becomes -1, which every
    // unsigned range test refuses.
    mint integerAt(mint index) const {
        if (isInteger()) return integers()[static_cast<std::size_t>(index)];
        const mreal value = reals()[static_cast<std::size_t>(index)];
        if (!std::isfinite(value) || std::fabs(value) >= 9.0e18) return -1;
        return static_cast<mint>(value);
    }

private:
    QuorbelLibraryData data_;
    MTensor tensor_;
};

}  // namespace OstrelUtils
