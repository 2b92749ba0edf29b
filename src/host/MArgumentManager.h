#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/Image.h"
#include "host/IntegerTensor.h"
#include "host/RawArray.h"
#include "quorbel/QuorbelLibrary.h"

namespace OstrelUtils {

// Typed, bounds-checked access to the arguments of one export call, and the
// one place that writes its result.
class MArgumentManager {
public:
    // `stringArguments` are the positions the export declares as strings.
    MArgumentManager(mint argc, MArgument *args, MArgument result,
                     std::span<const unsigned> stringArguments = {});
    MArgumentManager(const MArgumentManager &) = delete;
    MArgumentManager &operator=(const MArgumentManager &) = delete;
    // Frees the string copies, and gives back to the kernel every declared
    // string that the worker never asked for (it failed before it got there):
    // the kernel's copy belongs to the call either way.
    virtual ~MArgumentManager();

    mint argumentCount() const noexcept { return argc_; }

    bool getBoolean(unsigned index) const;
    mint getInteger(unsigned index) const;
    mreal getReal(unsigned index) const;
    // The first request copies the kernel's bytes and gives the kernel's string
    // back at once; later requests return the same copy.
    const std::string &getString(unsigned index);
    MTensor getTensor(unsigned index) const;
    MImage_Data_Type getImageDataType(unsigned index) const;
    // The kernel's handle itself, for workers that check its facts in their own order.
    MImage getImageHandle(unsigned index) const { return MArgument_getMImage(argument(index)); }

    template <typename T>
    Image<T> getImage(unsigned index) const {
        return Image<T>(MArgument_getMImage(argument(index)));
    }
    template <typename T>
    RawArray<T> getRawArray(unsigned index) const {
        return RawArray<T>(MArgument_getMRawArray(argument(index)));
    }

    void setInteger(mint value);
    void setBoolean(bool value);
    void setString(const char *value);
    template <typename T>
    void setImage(Image<T> &image) {
        image.passTo(result_);
    }
    template <typename T>
    void setRawArray(RawArray<T> &array) {
        array.passTo(result_);
    }
    void setTensor(IntegerTensor &tensor) { tensor.passTo(result_); }

private:
    const MArgument &argument(unsigned index) const;
    // Gives back the kernel's strings that no get asked for.
    void releaseUnreadStrings() noexcept;

    mint argc_;
    MArgument *args_;
    MArgument result_;
    std::vector<std::unique_ptr<std::string>> strings_;
    std::span<const unsigned> stringArguments_;
};

}  // namespace OstrelUtils
