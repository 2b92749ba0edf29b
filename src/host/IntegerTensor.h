#pragma once

#include <span>

#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

// A kernel tensor of machine integers that the library creates, freed unless
// it was handed to the kernel as the result.
class IntegerTensor {
public:
    IntegerTensor() = default;
    ~IntegerTensor();
    IntegerTensor(const IntegerTensor &) = delete;
    IntegerTensor &operator=(const IntegerTensor &) = delete;

    // Asks the kernel for a tensor of the given dimensions; returns its code.
    int create(std::span<const mint> dimensions);
    mint *data() const;
    // Writes the handle into the result slot; from then on the kernel owns it.
    void passTo(MArgument result);

private:
    MTensor handle_ = nullptr;
};

}  // namespace OstrelUtils
