#pragma once

#include <limits>
#include <utility>
#include <vector>

#include "host/OstrelError.h"
#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

// A multi-dimensional object that lives in the kernel (an image or a raw
// array), seen as a row-major array of T. It either wraps an argument, which
// the kernel owns, or owns an object that the library created, which it frees
// unless the object was handed to the kernel as a result.
template <typename T>
class MArray {
public:
    using value_type = T;

    MArray(const MArray &) = delete;
    MArray &operator=(const MArray &) = delete;
    virtual ~MArray() = default;

    mint size() const noexcept { return flattenedLength_; }
    mint rank() const noexcept { return rank_; }
    const std::vector<mint> &dimensions() const noexcept { return dimensions_; }
    mint dimension(mint index) const {
        if (index < 0 || index >= rank_) raiseSizeError();
        return dimensions_[static_cast<std::size_t>(index)];
    }
    // Elements spanned by one step in each dimension.
    const std::vector<mint> &offsets() const noexcept { return offsets_; }
    bool ownsHostObject() const noexcept { return owner_; }

    T *data() const { return dataPointer(); }
    T &operator[](mint index) const { return dataPointer()[index]; }
    T &at(mint index) const {
        if (index < 0 || index >= flattenedLength_) raiseIndexError();
        return dataPointer()[index];
    }

    // Writes the handle into the result slot; from then on the kernel owns it.
    void passTo(MArgument result) {
        passToResult(result);
        owner_ = false;
    }

    // Each instantiation keeps its own copy of the kernel's tables, filled at
    // initialisation.
    static void setTables(QuorbelLibraryData data) {
        libData_ = data;
        rawArrayFunctions_ = data != nullptr ? data->rawArrayFunctions : nullptr;
        imageFunctions_ = data != nullptr ? data->imageFunctions : nullptr;
    }

protected:
    MArray() = default;

    // A new object of the given dimensions; the derived class creates it.
    explicit MArray(std::vector<mint> dimensions) {
        if (libData_ == nullptr || rawArrayFunctions_ == nullptr || imageFunctions_ == nullptr)
            throw OstrelError(FunctionError);
        for (mint d : dimensions)
            if (d < 1) throw OstrelError(DimensionError, "Invalid input vector with array dimensions");
        setDimensions(std::move(dimensions));
        owner_ = true;
    }

    MArray(MArray &&other) noexcept
        : flattenedLength_(other.flattenedLength_),
          rank_(other.rank_),
          dimensions_(std::move(other.dimensions_)),
          offsets_(std::move(other.offsets_)),
          owner_(std::exchange(other.owner_, false)) {}

    void setDimensions(std::vector<mint> dimensions) {
        dimensions_ = std::move(dimensions);
        rank_ = static_cast<mint>(dimensions_.size());
        offsets_.assign(dimensions_.size(), 1);
        flattenedLength_ = 1;
        for (std::size_t k = dimensions_.size(); k-- > 0;) {
            offsets_[k] = flattenedLength_;
            // Dimensions too large to multiply are the host's to refuse when
            // asked to create them; until then the length saturates.
            if (__builtin_mul_overflow(flattenedLength_, dimensions_[k], &flattenedLength_))
                flattenedLength_ = std::numeric_limits<mint>::max();
        }
    }

    virtual T *dataPointer() const = 0;
    [[noreturn]] virtual void raiseIndexError() const = 0;
    [[noreturn]] virtual void raiseInitError() const { throw OstrelError(FunctionError); }
    [[noreturn]] virtual void raiseSizeError() const { throw OstrelError(DimensionError); }
    virtual void createHostObject() = 0;
    virtual void freeHostObject() = 0;
    virtual void passToResult(MArgument result) = 0;

    static inline QuorbelLibraryData libData_ = nullptr;
    static inline QuorbelRawArrayFunctions rawArrayFunctions_ = nullptr;
    static inline QuorbelImageFunctions imageFunctions_ = nullptr;

    mint flattenedLength_ = 0;
    mint rank_ = 0;
    std::vector<mint> dimensions_;
    std::vector<mint> offsets_;
    bool owner_ = false;
};

}  // namespace OstrelUtils
