#include "host/IntegerTensor.h"

#include "host/LibraryData.h"
#include "host/OstrelError.h"

namespace OstrelUtils {

IntegerTensor::~IntegerTensor() {
    if (handle_ != nullptr) libraryData()->tensorFree(handle_);
}

int IntegerTensor::create(std::span<const mint> dimensions) {
    if (libraryData() == nullptr) return FunctionError;
    return libraryData()->tensorNew(MTensor_Type_Integer, static_cast<mint>(dimensions.size()),
                                    dimensions.data(), &handle_);
}

mint *IntegerTensor::data() const { return libraryData()->tensorGetIntegerData(handle_); }

void IntegerTensor::passTo(MArgument result) {
    MArgument_setMTensor(result, handle_);
    handle_ = nullptr;
}

}  // namespace OstrelUtils
