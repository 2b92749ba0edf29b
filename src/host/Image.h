#pragma once

#include <optional>

#include "host/ElementTypes.h"
#include "host/MArray.h"

namespace OstrelUtils {

// A kernel image with samples of type T: rows x columns (x slices) x channels.
template <typename T>
class Image : public MArray<T> {
    using Base = MArray<T>;

public:
    // Wraps an argument; the kernel keeps ownership.
    explicit Image(MImage handle) : handle_(handle) {
        if (Base::imageFunctions_ == nullptr) raiseInitError();
        if (Base::imageFunctions_->getDataType(handle) != ElementType<T>::kImageType)
            throw OstrelError(ImageTypeError);
        Base::setDimensions(queryDimensions());
    }

    // Creates a new, owned image: 2-D when slices is 0 or less, else 3-D.
    Image(mint slices, mint width, mint height, mint channels, MImage_CS_Type colorSpace,
          bool interleaved)
        : Base(shape(slices, width, height, channels)),
          slices_(slices),
          colorSpace_(colorSpace),
          interleaved_(interleaved) {
        createHostObject();
    }

    // Creates a new, owned image as the constructor above does, for callers
    // that answer with the kernel's creation code: returns that code instead
    // of throwing, and fills `created` only when it is 0. Needs no more of the
    // kernel than its image functions.
    static int create(std::optional<Image> &created, mint slices, mint width, mint height,
                      mint channels, MImage_CS_Type colorSpace, bool interleaved) {
        if (Base::imageFunctions_ == nullptr) return FunctionError;
        Image image(slices, colorSpace, interleaved);
        image.setDimensions(shape(slices, width, height, channels));
        if (const int code = image.newHostObject(); code != 0) return code;
        image.owner_ = true;
        created.emplace(std::move(image));
        return 0;
    }

    Image(Image &&other) noexcept
        : Base(std::move(other)),
          handle_(std::exchange(other.handle_, nullptr)),
          slices_(other.slices_),
          colorSpace_(other.colorSpace_),
          interleaved_(other.interleaved_) {}

    ~Image() override {
        if (this->owner_ && handle_ != nullptr) freeHostObject();
    }

    // An owned copy made by the kernel.
    Image clone() const {
        MImage copy = nullptr;
        if (Base::imageFunctions_ == nullptr) raiseInitError();
        if (Base::imageFunctions_->clone(handle_, &copy) != 0) throw OstrelError(ImageCloneError);
        Image result(copy);
        result.owner_ = true;
        return result;
    }

    MImage handle() const noexcept { return handle_; }
    mint rows() const { return Base::imageFunctions_->getRowCount(handle_); }
    mint columns() const { return Base::imageFunctions_->getColumnCount(handle_); }
    mint slices() const { return Base::imageFunctions_->getSliceCount(handle_); }
    mint channels() const { return Base::imageFunctions_->getChannels(handle_); }
    mint imageRank() const { return Base::imageFunctions_->getRank(handle_); }
    bool is3D() const { return imageRank() == 3; }
    bool interleaved() const { return Base::imageFunctions_->interleavedQ(handle_) != 0; }
    bool alphaChannel() const { return Base::imageFunctions_->alphaChannelQ(handle_) != 0; }
    MImage_CS_Type colorSpace() const { return Base::imageFunctions_->getColorSpace(handle_); }

protected:
    T *dataPointer() const override {
        return static_cast<T *>(Base::imageFunctions_->getRawData(handle_));
    }
    [[noreturn]] void raiseIndexError() const override { throw OstrelError(ImageIndexError); }
    [[noreturn]] void raiseInitError() const override { throw OstrelError(ImageInitError); }
    [[noreturn]] void raiseSizeError() const override { throw OstrelError(ImageSizeError); }

    void createHostObject() override {
        if (Base::imageFunctions_ == nullptr) raiseInitError();
        if (newHostObject() != 0) throw OstrelError(ImageNewError);
    }
    void freeHostObject() override { Base::imageFunctions_->free(handle_); }
    void passToResult(MArgument result) override { MArgument_setMImage(result, handle_); }

private:
    // Not yet created: for create().
    Image(mint slices, MImage_CS_Type colorSpace, bool interleaved)
        : slices_(slices), colorSpace_(colorSpace), interleaved_(interleaved) {}

    static std::vector<mint> shape(mint slices, mint width, mint height, mint channels) {
        return slices > 0 ? std::vector<mint>{slices, height, width, channels}
                          : std::vector<mint>{height, width, channels};
    }

    // Asks the kernel for the image of dimensions_; returns its code.
    int newHostObject() {
        const std::vector<mint> &d = this->dimensions_;
        const bool threeD = slices_ > 0;
        const mint height = d[threeD ? 1 : 0], width = d[threeD ? 2 : 1], channels = d.back();
        MImage created = nullptr;
        const int code =
            threeD ? Base::imageFunctions_->new3D(slices_, width, height, channels,
                                                  ElementType<T>::kImageType, colorSpace_,
                                                  interleaved_, &created)
                   : Base::imageFunctions_->new2D(width, height, channels,
                                                  ElementType<T>::kImageType, colorSpace_,
                                                  interleaved_, &created);
        if (code == 0) handle_ = created;
        return code;
    }

    std::vector<mint> queryDimensions() const {
        std::vector<mint> dims;
        if (imageRank() == 3) dims.push_back(slices());
        dims.insert(dims.end(), {rows(), columns(), channels()});
        return dims;
    }

    MImage handle_ = nullptr;
    mint slices_ = 0;
    MImage_CS_Type colorSpace_ = MImage_CS_Automatic;
    bool interleaved_ = true;
};

}  // namespace OstrelUtils
