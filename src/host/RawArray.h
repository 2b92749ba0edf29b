#pragma once


#include "host/ElementTypes.h"
#include "host/MArray.h"

namespace OstrelUtils {

// A kernel raw array of T.
template <typename T>
class RawArray : public MArray<T> {
    using Base = MArray<T>;

public:
    // Wraps an argument; the kernel keeps ownership.
    explicit RawArray(MRawArray handle) : handle_(handle) {
        if (Base::rawArrayFunctions_ == nullptr) raiseInitError();
        if (Base::rawArrayFunctions_->getType(handle) != ElementType<T>::kRawArrayType)
            throw OstrelError(RawArrayTypeError);
        const mint rank = Base::rawArrayFunctions_->getRank(handle);
        const mint *dims = Base::rawArrayFunctions_->getDimensions(handle);
        Base::setDimensions(rank > 0 && dims != nullptr ? std::vector<mint>(dims, dims + rank)
                                                        : std::vector<mint>{});
        Base::flattenedLength_ = Base::rawArrayFunctions_->getFlattenedLength(handle);
    }

    // Creates a new, owned raw array.
    explicit RawArray(std::vector<mint> dimensions) : Base(std::move(dimensions)) {
        createHostObject();
    }

    RawArray(RawArray &&other) noexcept
        : Base(std::move(other)), handle_(std::exchange(other.handle_, nullptr)) {}

    ~RawArray() override {
        if (this->owner_ && handle_ != nullptr) freeHostObject();
    }

    MRawArray handle() const noexcept { return handle_; }

    void fill(T value) const {
        T *p = dataPointer();
        for (mint i = 0; i < this->flattenedLength_; ++i) p[i] = value;
    }

protected:
    T *dataPointer() const override {
        return static_cast<T *>(Base::rawArrayFunctions_->getData(handle_));
    }
    [[noreturn]] void raiseIndexError() const override { throw OstrelError(RawArrayIndexError); }
    [[noreturn]] void raiseInitError() const override { throw OstrelError(RawArrayInitError); }
    [[noreturn]] void raiseSizeError() const override { throw OstrelError(RawArraySizeError); }

    void createHostObject() override {
        if (Base::rawArrayFunctions_ == nullptr) raiseInitError();
        MRawArray created = nullptr;
        if (Base::rawArrayFunctions_->create(ElementType<T>::kRawArrayType, this->rank_,
                                             this->dimensions_.data(), &created) != 0)
            throw OstrelError(RawArrayNewError);
        handle_ = created;
    }
    void freeHostObject() override { Base::rawArrayFunctions_->free(handle_); }
    void passToResult(MArgument result) override { MArgument_setMRawArray(result, handle_); }

private:
    MRawArray handle_ = nullptr;
};

}  // namespace OstrelUtils
